// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/json_output.h"

namespace kv::polarization {

Json json_of(const std::filesystem::path& path) {
  if (path.empty()) return nullptr;
  const std::u8string text = path.u8string();
  return std::string(text.begin(), text.end());
}

std::string line_of(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string text_of(const Json& json) {
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace kv::polarization

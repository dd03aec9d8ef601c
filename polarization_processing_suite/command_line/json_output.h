// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

namespace kv::polarization {

/// Members in the order in which they were set.
using Json = nlohmann::ordered_json;

/// Null for an empty path.
inline Json json_of(const std::filesystem::path& path) {
  if (path.empty()) return nullptr;
  const std::u8string text = path.u8string();
  return std::string(text.begin(), text.end());
}

/// In one line, without its end.
inline std::string line_of(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// For a file or a stream. Bytes of file names that are no UTF-8 become replacement characters.
inline std::string text_of(const Json& json) {
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace kv::polarization

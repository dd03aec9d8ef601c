// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace kv::polarization {

/// A text out of a file, as the one line of a Fault can show it: its start, without control
/// characters.
inline std::string shown(std::string_view text, std::size_t most = 60) {
  std::string start(text.substr(0, most));
  std::ranges::replace_if(
      start, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, '?');
  return text.size() > most ? start + "..." : start;
}

}  // namespace kv::polarization

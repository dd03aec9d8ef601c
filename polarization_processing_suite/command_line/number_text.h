// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <charconv>
#include <cstdio>
#include <string>

namespace kv::polarization {

/// The shortest text that reads as this very number.
inline std::string shortest_text(double number) {
  std::array<char, 32> text{};
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

/// As std::snprintf writes them, up to 199 bytes.
template <class... Values>
std::string formatted(const char* form, Values... values) {
  std::array<char, 200> text{};
  std::snprintf(text.data(), text.size(), form, values...);
  return text.data();
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/messages.h"

#include <iostream>
#include <string_view>

namespace kv::polarization {
namespace {

std::string escaped(unsigned char byte) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  return {'\\', 'x', digits[byte >> 4], digits[byte & 15]};
}

/// Bytes of the UTF-8 character at the text's start; 0 if there is none, or if it is a control
/// character. Forms that are longer than needed are let through, as terminals show none of them.
std::size_t shown_bytes(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  if (first < 0x80) return first >= 0x20 && first != 0x7F ? 1 : 0;
  const std::size_t size = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || text.size() < size) return 0;
  for (std::size_t i = 1; i < size; ++i) {
    if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) return 0;
  }
  const bool is_control = first == 0xC2 && static_cast<unsigned char>(text[1]) < 0xA0;
  return is_control ? 0 : size;
}

}  // namespace

std::string printable(const std::string& text) {
  std::string shown;
  for (std::string_view rest = text; !rest.empty();) {
    const std::size_t size = shown_bytes(rest);
    if (size == 0) {
      shown += escaped(static_cast<unsigned char>(rest[0]));
      rest.remove_prefix(1);
    } else {
      shown += rest.substr(0, size);
      rest.remove_prefix(size);
    }
  }
  return shown;
}

std::string printable(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return printable(std::string(text.begin(), text.end()));
}

void complain(const std::string& line) {
  // One piece, so that lines of several threads and processes do not mix.
  std::cerr << "kv-polarize: " + printable(line) + "\n" << std::flush;
}

}  // namespace kv::polarization

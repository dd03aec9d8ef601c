// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/inputs/natural_order.h"

#include <algorithm>
#include <cstddef>

namespace kv::polarization {
namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }

/// Takes a number, as its digits without leading zeros, of any length.
std::string_view take_number(std::string_view& text) {
  const std::size_t size = std::min(text.find_first_not_of("0123456789"), text.size());
  std::string_view number = text.substr(0, size);
  text.remove_prefix(size);
  number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
  return number;
}

}  // namespace

bool naturally_before(std::string_view first, std::string_view second) {
  std::string_view a = first;
  std::string_view b = second;
  while (!a.empty() && !b.empty()) {
    if (is_digit(a[0]) && is_digit(b[0])) {
      const std::string_view left = take_number(a);
      const std::string_view right = take_number(b);
      if (left.size() != right.size()) return left.size() < right.size();
      if (left != right) return left < right;
    } else {
      if (a[0] != b[0]) return static_cast<unsigned char>(a[0]) < static_cast<unsigned char>(b[0]);
      a.remove_prefix(1);
      b.remove_prefix(1);
    }
  }
  if (a.empty() != b.empty()) return a.empty();
  return first < second;  // they differ in zeros alone
}

}  // namespace kv::polarization

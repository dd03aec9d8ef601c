// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/report/number_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace kv::polarization {
namespace {

constexpr std::string_view kUnknown = "unknown";
constexpr int kMostDecimals = 12;

std::string digits_of(double value, std::chars_format format, int decimals) {
  std::array<char, 400> text{};  // the longest double has 309 digits before its point
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), value, format, decimals).ptr;
  return {text.data(), end};
}

/// With the sign that is as wide as a digit, and none for a zero.
std::string with_minus(std::string digits) {
  if (!digits.starts_with('-')) return digits;
  const bool zero = digits.find_first_of("123456789") == std::string::npos;
  return (zero ? "" : "\u2212") + digits.substr(1);
}

/// By the exponent that the value has when it is rounded: that of 9.96 is 1 for two digits.
int decimals_for(double value, int digits) {
  const std::string rounded = digits_of(value, std::chars_format::scientific, digits - 1);
  const int exponent = std::stoi(rounded.substr(rounded.find('e') + 1));
  return std::clamp(digits - 1 - exponent, 0, kMostDecimals);
}

/// A degree or per cent sign stands as typographers have it: the one at the number, the other
/// apart.
std::string unit_behind(std::string_view unit) {
  if (unit.empty() || unit.starts_with("°")) return std::string(unit);
  return "\u00A0" + std::string(unit);
}

}  // namespace

std::string fixed(double value, int decimals) {
  if (!std::isfinite(value)) return std::string(kUnknown);
  return with_minus(digits_of(value, std::chars_format::fixed, decimals));
}

std::string significant(double value, int digits) {
  const double size = std::abs(value);
  if (std::isfinite(value) && size != 0 && (size < 1e-6 || size >= 1e7)) {
    return with_minus(digits_of(value, std::chars_format::scientific, digits - 1));
  }
  return fixed(value, decimals_for(std::isfinite(value) ? value : 0, digits));
}

std::string with_unit(double value, std::string_view unit, int digits) {
  const std::string text = significant(value, digits);
  return std::isfinite(value) ? text + unit_behind(unit) : text;
}

std::string with_error(const Measured& measured, std::string_view unit) {
  if (!std::isfinite(measured.value)) return std::string(kUnknown);
  if (!std::isfinite(measured.error) || measured.error <= 0) {
    return with_unit(measured.value, unit, 4);
  }
  const int decimals = decimals_for(measured.error, 2);
  const std::string behind = unit_behind(unit);
  return fixed(measured.value, decimals) + (unit == "°" ? behind : "") + "\u00A0±\u00A0" +
         fixed(measured.error, decimals) + behind;
}

std::string count_text(std::uint64_t count) {
  std::string digits = std::to_string(count);
  if (digits.size() < 5) return digits;
  std::string text;
  for (std::size_t i = 0; i < digits.size(); ++i) {
    if (i > 0 && (digits.size() - i) % 3 == 0) text += "\u202F";
    text += digits[i];
  }
  return text;
}

std::string percentage(double ratio, int digits) { return with_unit(100 * ratio, "%", digits); }

std::string counted(std::uint64_t count, std::string_view noun) {
  return count_text(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}

std::string coordinate(double value) {
  return std::isfinite(value) ? digits_of(value, std::chars_format::fixed, 2) : "0";
}

}  // namespace kv::polarization

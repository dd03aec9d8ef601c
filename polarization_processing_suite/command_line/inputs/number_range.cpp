// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/inputs/number_range.h"

#include <algorithm>
#include <charconv>
#include <regex>

#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

constexpr std::size_t kMostNames = 10'000'000;

[[noreturn]] void refuse_range(const std::string& range, const std::string& why) {
  throw Fault(FaultKind::argument, "the range " + range + " " + why);
}

std::int64_t number_of(const std::string& digits, const std::string& range) {
  std::int64_t number = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (result.ec != std::errc()) refuse_range(range, "has a number that is too large");
  return number;
}

std::size_t padded_width(const std::string& first, const std::string& last) {
  const auto leads_with_zero = [](const std::string& digits) {
    return digits.size() > 1 && digits[0] == '0';
  };
  const bool padded = leads_with_zero(first) || leads_with_zero(last);
  return padded ? std::max(first.size(), last.size()) : 0;
}

}  // namespace

std::optional<RangedName> RangedName::in(const std::string& text) {
  if (text.find('{') == std::string::npos) return std::nullopt;  // a regular expression is slow
  static const std::regex form(R"(\{(\d{1,30})\.\.(\d{1,30})(?:(?:x|\.\.)(\d{1,30}))?\})");
  RangedName name;
  std::string rest = text;
  for (std::smatch found; std::regex_search(rest, found, form); rest = name.end_) {
    const std::string range = found.str();
    const std::int64_t first = number_of(found.str(1), range);
    const std::int64_t last = number_of(found.str(2), range);
    const std::int64_t step = found[3].matched ? number_of(found.str(3), range) : 1;
    if (step == 0) refuse_range(range, "has a step of 0; it must be 1 or more");
    const auto steps =
        static_cast<std::size_t>((std::max(first, last) - std::min(first, last)) / step);
    if (steps >= kMostNames / name.count_) {
      refuse_range(range, "stands for too many names; at most " + std::to_string(kMostNames) +
                              " are taken in one word");
    }
    name.count_ *= steps + 1;
    name.parts_.push_back({found.prefix(), first, last < first ? -step : step, steps + 1,
                           padded_width(found.str(1), found.str(2))});
    name.end_ = found.suffix();
  }
  if (name.parts_.empty()) return std::nullopt;
  return name;
}

std::string RangedName::at(std::size_t index) const {
  std::string name;
  std::size_t names = count_;
  for (const Part& part : parts_) {
    names /= part.count;
    const auto place = static_cast<std::int64_t>(index / names % part.count);
    const std::string digits = std::to_string(part.first + place * part.step);
    const std::size_t zeros = part.width > digits.size() ? part.width - digits.size() : 0;
    name += part.before + std::string(zeros, '0') + digits;
  }
  return name + end_;
}

}  // namespace kv::polarization

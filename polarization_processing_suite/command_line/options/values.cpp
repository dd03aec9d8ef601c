// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/options/values.h"

#include <algorithm>
#include <charconv>
#include <new>
#include <sstream>

namespace kv::polarization {
namespace {

std::string short_text(double number) {
  std::ostringstream text;
  text.precision(12);
  text << number;
  return text.str();
}

[[noreturn]] void refuse_value(const std::string& text, const std::string& wanted) {
  throw BadValue("'" + text + "' is not " + wanted);
}

}  // namespace

double number_of(const std::string& text, double least, double most) {
  double number = 0;
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  // Written so that a NaN is refused as well.
  if (error != std::errc() || rest != end || !(number >= least && number <= most)) {
    refuse_value(text, "a number from " + short_text(least) + " to " + short_text(most));
  }
  return number;
}

long long whole_number_of(const std::string& text, long long least, long long most) {
  const std::string wanted =
      "a whole number from " + std::to_string(least) + " to " + std::to_string(most);
  long long number = 0;
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  const std::string_view fraction(rest, end);
  const bool is_whole =
      fraction.empty() || (fraction[0] == '.' && fraction.size() > 1 &&
                           fraction.find_first_not_of('0', 1) == std::string_view::npos);
  if (error != std::errc() || !is_whole || number < least || number > most)
    refuse_value(text, wanted);
  return number;
}

std::vector<std::string> split_list(const std::string& list) {
  std::vector<std::string> items;
  std::istringstream stream(list);
  for (std::string item; std::getline(stream, item, ',');) items.push_back(item);
  if (stream.bad()) throw std::bad_alloc();  // which getline keeps to itself
  return items;
}

std::string comma_list(const std::vector<std::string>& words) {
  std::string list;
  for (const std::string& word : words) list += (list.empty() ? "" : ", ") + word;
  return list;
}

std::string choice_of(const std::string& text, const std::vector<std::string>& choices) {
  const auto found = std::ranges::find(choices, text);
  if (found == choices.end()) refuse_value(text, "one of " + comma_list(choices));
  return *found;
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <stdexcept>
#include <string>
#include <vector>

#include "command_line/options/option_list.h"

namespace kv::polarization {

/// Why an option's value cannot be, and what would be right, without the option's name.
class BadValue : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A command line that is wrong as a whole: what was wrong, and what would be right.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A number in plain or scientific notation, between two others. No infinity and no NaN is one.
double number_of(const std::string& text, double least, double most);

/// A whole number between two others; 90.0 is one.
long long whole_number_of(const std::string& text, long long least, long long most);

/// The items of a comma list.
std::vector<std::string> split_list(const std::string& list);

/// A list of words as a sentence has it.
std::string comma_list(const std::vector<std::string>& words);

/// The text itself if it is among the choices.
std::string choice_of(const std::string& text, const std::vector<std::string>& choices);

/// The value of an enumeration whose names are listed in its order.
template <class Value, std::size_t count>
Value named_value(const std::string& name, const std::array<const char*, count>& names) {
  const std::string found = choice_of(name, {names.begin(), names.end()});
  return static_cast<Value>(std::ranges::find(names, found) - names.begin());
}

/// Setters of variables, also of optional ones, which must outlive them.
template <class Target>
Setter number_into(Target& target, double least, double most) {
  return [&target, least, most](const std::string& text) {
    if constexpr (std::same_as<Target, float>) {
      target = static_cast<float>(number_of(text, least, most));
    } else {
      target = number_of(text, least, most);
    }
  };
}

template <class Target>
Setter whole_number_into(Target& target, long long least, long long most) {
  return [&target, least, most](const std::string& text) {
    const long long number = whole_number_of(text, least, most);
    if constexpr (std::integral<Target>) {
      target = static_cast<Target>(number);
    } else {
      target = static_cast<typename Target::value_type>(number);
    }
  };
}

template <class Target>
Setter text_into(Target& target) {
  return [&target](const std::string& text) { target = text; };
}

/// As text_into, of file names: they must not be empty.
template <class Target>
Setter path_into(Target& target) {
  return [&target](const std::string& text) {
    if (text.empty()) throw BadValue("the name is empty; name a file or a folder");
    target = text;
  };
}

}  // namespace kv::polarization

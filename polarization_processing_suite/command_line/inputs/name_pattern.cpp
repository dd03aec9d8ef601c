// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/inputs/name_pattern.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "command_line/path_text.h"
#include "platform/file_names.h"

namespace kv::polarization {
namespace {

char32_t folded(char32_t character) {
  if constexpr (platform::kNamesIgnoreCase) {
    if (character >= U'A' && character <= U'Z') return character + (U'a' - U'A');
  }
  return character;
}

/// Bytes of a character of UTF-8 that begins with this one; 0 for none.
std::size_t bytes_of_character(unsigned char first) {
  if (first < 0x80) return 1;
  if (first < 0xC2 || first > 0xF4) return 0;
  return first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
}

/// Takes the first character off the text. A byte that belongs to none counts as one, beyond those
/// of Unicode, as file names may hold anything.
char32_t take_character(std::string_view& text) {
  constexpr char32_t beyond = 0x110000;
  const auto first = static_cast<unsigned char>(text[0]);
  const std::size_t size = bytes_of_character(first);
  char32_t character = size == 1 ? first : first & (0x7FU >> size);
  bool is_character = size > 0 && size <= text.size();
  for (std::size_t i = 1; is_character && i < size; ++i) {
    const auto next = static_cast<unsigned char>(text[i]);
    is_character = (next & 0xC0) == 0x80;
    character = character << 6 | (next & 0x3FU);
  }
  text.remove_prefix(is_character ? size : 1);
  return is_character ? folded(character) : beyond + first;
}

std::u32string characters_of(std::string_view text) {
  std::u32string characters;
  while (!text.empty()) characters += take_character(text);
  return characters;
}

/// Where the bracket expression that begins at `open` ends, at its closing bracket.
std::size_t closing_bracket(const std::u32string& text, std::size_t open) {
  std::size_t first = open + 1;
  if (first < text.size() && (text[first] == U'!' || text[first] == U'^')) ++first;
  return text.find(U']', first + 1);  // one that stands first is of the set
}

/// What matches the rest of one sequence by the rest of another, where an item of `any_number` may
/// take any number of names. Goes back to the last of them only, so that no pattern takes long.
template <class Items, class Names, class IsAny, class Takes>
bool match(const Items& items, const Names& names, IsAny is_any, Takes takes) {
  std::size_t item = 0;
  std::size_t name = 0;
  std::optional<std::pair<std::size_t, std::size_t>> retry;
  while (name < names.size()) {
    if (item < items.size() && is_any(items[item])) {
      retry = {++item, name};
    } else if (item < items.size() && takes(items[item], names[name])) {
      ++item;
      ++name;
    } else if (retry) {
      item = retry->first;
      name = ++retry->second;
    } else {
      return false;
    }
  }
  while (item < items.size() && is_any(items[item])) ++item;
  return item == items.size();
}

}  // namespace

NamePattern::NamePattern(std::string_view text) {
  using enum Item::Kind;
  const std::u32string pattern = characters_of(text);
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const char32_t character = pattern[i];
    const std::size_t close =
        character == U'[' ? closing_bracket(pattern, i) : std::u32string::npos;
    if (character == U'*') {
      items_.push_back({any_number, {}});
    } else if (character == U'?') {
      items_.push_back({any, {}});
    } else if (close == std::u32string::npos) {
      items_.push_back({set, {{character, character}}});
    } else {
      items_.push_back(set_of(std::u32string_view(pattern).substr(i + 1, close - i - 1)));
      i = close;
    }
  }
}

NamePattern::Item NamePattern::set_of(std::u32string_view text) {
  const bool negated = text[0] == U'!' || text[0] == U'^';
  Item item{negated ? Item::Kind::other_than_set : Item::Kind::set, {}};
  for (std::size_t i = negated ? 1 : 0; i < text.size(); ++i) {
    const bool is_range = i + 2 < text.size() && text[i + 1] == U'-';
    item.ranges.emplace_back(text[i], text[is_range ? i + 2 : i]);
    if (is_range) i += 2;
  }
  return item;
}

bool NamePattern::Item::takes(char32_t character) const {
  if (kind == Kind::any) return true;
  const bool is_in = std::ranges::any_of(ranges, [character](const auto& range) {
    return character >= range.first && character <= range.second;
  });
  return is_in == (kind == Kind::set);
}

bool NamePattern::matches(std::string_view name) const {
  return match(
      items_, characters_of(name),
      [](const Item& item) { return item.kind == Item::Kind::any_number; },
      [](const Item& item, char32_t character) { return item.takes(character); });
}

bool NamePattern::has_wildcards(std::string_view text) {
  if (text.find_first_of("*?") != std::string_view::npos) return true;
  const std::u32string characters = characters_of(text);
  const std::size_t open = characters.find(U'[');
  return open != std::u32string::npos && closing_bracket(characters, open) != std::u32string::npos;
}

PathPattern::PathPattern(std::string_view text) {
  for (const std::string_view name : names_of(text)) {
    steps_.push_back({name == "**", NamePattern(name)});
  }
}

bool PathPattern::matches(std::string_view path) const {
  return match(
      steps_, names_of(path), [](const Step& step) { return step.any_folders; },
      [](const Step& step, std::string_view name) { return step.name.matches(name); });
}

}  // namespace kv::polarization

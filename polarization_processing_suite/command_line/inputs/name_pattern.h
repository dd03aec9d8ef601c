// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kv::polarization {

/// A pattern of one name: ? stands for a character, * for any number of them, [a-cx] for one of a
/// set, [!a-c] for one of no set; what is no bracket expression stands for itself. A case of ASCII
/// letters is told from the other where file systems do so.
class NamePattern {
 public:
  explicit NamePattern(std::string_view text);

  bool matches(std::string_view name) const;

  /// Whether the text is more than a plain name.
  static bool has_wildcards(std::string_view text);

 private:
  struct Item {
    enum class Kind { set, other_than_set, any, any_number } kind;
    std::vector<std::pair<char32_t, char32_t>> ranges;

    bool takes(char32_t character) const;
  };

  /// Of what stands between brackets.
  static Item set_of(std::u32string_view text);

  std::vector<Item> items_;
};

/// Patterns of the names of a path; ** stands for any number of folders, none included.
class PathPattern {
 public:
  /// With / between the names.
  explicit PathPattern(std::string_view text);

  bool matches(std::string_view path) const;

 private:
  struct Step {
    bool any_folders;
    NamePattern name;
  };
  std::vector<Step> steps_;
};

}  // namespace kv::polarization

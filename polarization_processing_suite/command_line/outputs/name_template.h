// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace kv::polarization {

/// A frame's place in the run, as names may tell it.
struct NameParts {
  std::string name{};    ///< of the input, without its ending
  std::string folder{};  ///< of the input, with / between its names; may be empty
  std::string plane{};
  std::size_t page = 1;   ///< of the input, as it is to be written
  std::size_t pages = 1;  ///< of the input; gives the least width of `page`, so that names sort
  std::size_t index = 0;  ///< in the run, as it is to be written
};

/// What results are called: a path with placeholders, such as {folder}/{name}_{plane}. Texts are
/// UTF-8.
class NameTemplate {
 public:
  /// The placeholders are {name}, {folder}, {plane}, {page} and {index}; numbers may have a least
  /// width, which zeros fill, as {page:05}. {{ and }} are braces. Throws BadValue that tells what
  /// is wrong: the path must be relative, without "." and "..", and hold what names may hold.
  explicit NameTemplate(const std::string& text);

  /// Whether a placeholder, without braces, is in it.
  bool has(const std::string& placeholder) const;

  /// A relative path without ending, which may have folders; those that become empty are left out.
  /// Throws Fault when the file's name becomes empty, when a name becomes "." or "..", or when one
  /// with any ending of results is longer than 255 bytes, which file systems refuse.
  std::filesystem::path path_of(const NameParts& parts) const;

 private:
  /// A placeholder, and what stands before it.
  struct Piece {
    std::string before;
    std::string placeholder;  // empty at the template's end
    std::size_t width;
  };

  std::string text_;
  std::vector<Piece> pieces_;
};

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace kv::polarization {

/// A file of frames, or standard input.
struct Input {
  std::filesystem::path path{};  ///< as the user would write it; "-" for standard input
  /// Of the file, relative to the folder that was walked, or to what a pattern begins with before
  /// its first wildcard; empty for files named alone.
  std::filesystem::path folder{};

  bool is_standard_input() const { return path == "-"; }
};

/// What a command line says of its inputs.
struct InputRequest {
  std::vector<std::string> words{};  ///< of the command line, in UTF-8
  bool recursive = false;
  std::vector<std::string> skip{};  ///< patterns of names that are left out
  bool headerless = false;  ///< a shape of raw frames is given: every file of a folder may be one
  std::function<bool(const std::filesystem::path&)>
      is_own_result{};  ///< asked for files that a folder or pattern found; may be empty
};

struct InputList {
  std::vector<Input> inputs{};  ///< in the order of the words, each file once
  std::size_t own_results = 0;  ///< files that were left out as such
  std::size_t skipped = 0;      ///< files that patterns of the request left out
};

/// Finds the files that words stand for:
///
///     FILE                    itself, also one that does not exist
///     FOLDER                  its files with an ending of image_formats(), sorted naturally, and
///                             with `recursive` those of its folders, depth first
///     night/*.png             what the pattern matches, for shells that leave it as it is: ? and *
///                             within a name, [a-c] and [!a-c], ** for folders at any depth;
///                             folders that match are taken where no file does
///     frame_{0000..0999}.png  a name for each number, in steps as {0000..0999x10} or
///                             {0000..0999..10}; leading zeros give the width
///     @LIST, @-               words of a file or of standard input, a line each, but no lists;
///                             empty lines, and those that begin with #, are left out
///     -                       frames from standard input
///
/// A file that has the name of a pattern or range literally wins. Folders and patterns pass names
/// by that begin with a dot, and pipes, sockets and devices; folders also files of other endings.
/// With `headerless` they take every ending but .partial, .json, .csv, .html and .txt. Links to
/// folders are followed where that leads to new ones.
///
/// Patterns of `skip` are held against a file's name and against its whole path.
///
/// Throws Fault when a word cannot be what the user meant: a pattern, or a range, of no file, a
/// folder of folders alone, a folder or a list that cannot be read, a pipe, standard input for two
/// things; and when nothing is found at all. A file costs a few microseconds.
InputList list_inputs(const InputRequest& request);

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/inputs/input_list.h"

#include <algorithm>
#include <array>
#include <system_error>
#include <utility>

#include "command_line/inputs/folder_walk.h"
#include "command_line/inputs/input_collector.h"
#include "command_line/inputs/name_pattern.h"
#include "command_line/inputs/number_range.h"
#include "command_line/inputs/pattern_search.h"
#include "command_line/inputs/word_list.h"
#include "command_line/path_text.h"
#include "kv/image_files/image_format.h"
#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace fs = std::filesystem;
namespace {

[[noreturn]] void refuse(const std::string& line) { throw Fault(FaultKind::argument, line); }

/// Whether a file of a folder is likely to hold frames.
bool may_hold_frames(const fs::path& file, bool headerless) {
  // Texts, and files that are being written.
  constexpr std::array<std::string_view, 5> never = {".partial", ".json", ".csv", ".html", ".txt"};
  std::string ending = text_of(file.extension());
  for (char& letter : ending) {
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  }
  if (headerless) return std::ranges::find(never, ending) == never.end();
  return format_named(ending).has_value();
}

std::string endings_of_frames() {
  std::string list;
  for (const ImageFormatTraits& traits : image_formats()) {
    for (const std::string_view ending : traits.endings) {
      if (!ending.empty()) list += (list.empty() ? "" : ", ") + std::string(ending);
    }
  }
  return list;
}

/// The names by which shells and scripts hand on what is open already.
bool is_open_stream(const std::string& word) {
  return word == "/dev/stdin" || word.starts_with("/dev/fd/") || word.starts_with("/proc/self/fd/");
}

class InputFinder {
 public:
  explicit InputFinder(const InputRequest& request) : request_(request), collector_(request) {}

  InputList find() {
    for (const std::string& word : request_.words) {
      if (word.starts_with('@')) {
        add_list(word.substr(1));
      } else {
        add(word);
      }
    }
    if (collector_.list().inputs.empty()) refuse_nothing();
    return collector_.take_list();
  }

 private:
  void add_list(const std::string& name) {
    if (name == "-") take_standard_input();
    for (const std::string& word : read_word_list(name)) {
      if (word.starts_with('@')) {
        refuse("the list " + name + " names the list " + word.substr(1) +
               "; a list holds paths, and ./ stands before a name that begins with @");
      }
      add(word);
    }
  }

  void add(const std::string& word) {
    if (word.empty()) refuse("the name of an input is empty; name a file or a folder");
    if (word == "-") {
      take_standard_input();
      collector_.add_standard_input();
      return;
    }
    const fs::path path = path_of(word);
    switch (fs::status(path, ignored_).type()) {
      case fs::file_type::regular:
        return collector_.add_named(path);
      case fs::file_type::directory:
        return add_folder(path, {});
      case fs::file_type::fifo:
      case fs::file_type::character:
      case fs::file_type::block:
        if (is_open_stream(word)) return collector_.add_named(path);
        refuse(word + " is a " + (fs::is_fifo(path, ignored_) ? "pipe" : "device") +
               "; give its frames to standard input: kv-polarize transform - < " + word);
      case fs::file_type::socket:
        refuse(word + " is a socket; give its frames to standard input, which - stands for");
      default:
        add_absent(word);
    }
  }

  void take_standard_input() {
    if (standard_input_taken_) {
      refuse("standard input can be read once; give - or @- once, and not both");
    }
    standard_input_taken_ = true;
  }

  void add_folder(const fs::path& folder, const fs::path& relative) {
    std::size_t files = 0;
    const FolderWalk walk(folder, request_.recursive,
                          [&](const fs::path& file, const fs::path& inner) {
                            if (!may_hold_frames(file, request_.headerless)) return;
                            ++files;
                            collector_.add_found(file, inner.empty() ? relative : relative / inner);
                          });
    if (files == 0 && walk.left_folders_out()) {
      refuse("the folder " + text_of(folder) +
             " has no frames of its own, but folders; -r takes the frames in them");
    }
    // Whoever names a frame wants to be told that it is none.
    if (files == 0 && relative.empty() && may_hold_frames(folder, false))
      collector_.add_named(folder);
  }

  /// A word that is no file may stand for others.
  void add_absent(const std::string& word) {
    if (const auto names = RangedName::in(word)) {
      add_range(word, *names);
    } else if (NamePattern::has_wildcards(word)) {
      add_pattern(word);
    } else {
      ++absent_;
      collector_.add_named(path_of(word));
    }
  }

  void add_range(const std::string& word, const RangedName& names) {
    const std::size_t absent_before = absent_;
    for (std::size_t i = 0; i < names.count(); ++i) add(names.at(i));
    if (absent_ - absent_before == names.count()) {
      refuse("there is no file of the range " + word + ", from " + names.at(0) + " to " +
             names.at(names.count() - 1));
    }
  }

  void add_pattern(const std::string& pattern) {
    bool has_files = false;
    std::vector<Input> folders;
    search_pattern(
        pattern,
        [&](const fs::path& file, const fs::path& folder) {
          has_files = true;
          collector_.add_found(file, folder);
        },
        [&](const fs::path& found, const fs::path& folder) {
          folders.push_back({found, folder});
        });
    if (has_files) return;
    if (folders.empty()) refuse("there is no file that matches " + pattern);
    for (const auto& [path, folder] : folders) add_folder(path, folder);
  }

  [[noreturn]] void refuse_nothing() const {
    const auto& [inputs, own_results, skipped] = collector_.list();
    std::string line = "there are no frames";
    if (!request_.words.empty()) line += " in " + request_.words.front();
    if (request_.words.size() > 1) {
      line += " and " + std::to_string(request_.words.size() - 1) + " other places";
    }
    if (own_results + skipped > 0) {
      line += ": of the files there --skip leaves " + std::to_string(skipped) + " out, and " +
              std::to_string(own_results) + " are results of kv-polarize";
    } else if (request_.headerless) {
      line += "; every file is looked at but .partial, .json, .csv, .html and .txt";
    } else {
      line += "; looked for files that end in " + endings_of_frames();
    }
    refuse(line);
  }

  const InputRequest& request_;
  InputCollector collector_;
  bool standard_input_taken_ = false;
  std::size_t absent_ = 0;
  std::error_code ignored_;
};

}  // namespace

InputList list_inputs(const InputRequest& request) { return InputFinder(request).find(); }

}  // namespace kv::polarization

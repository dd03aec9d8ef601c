// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/compare/compare_report.h"

#include <cmath>
#include <iostream>

#include "command_line/exit_status.h"
#include "command_line/messages.h"
#include "command_line/path_text.h"

namespace kv::polarization {
namespace {

/// Text where JSON has no such number.
Json json_of(const PixelValue& value) {
  if (!std::isfinite(value.number)) return text_of(value);
  return value.float_bits == 0 ? Json(std::llround(value.number)) : Json(value.number);
}

Json json_of(const PixelDifferences& pixels) {
  Json json;
  json["pixels"] = pixels.pixels;
  json["of"] = pixels.all_pixels;
  json["largest"] = std::isfinite(pixels.largest) ? Json(pixels.largest) : Json("inf");
  json["first"] = {{"page", pixels.page + 1},   {"column", pixels.column},
                   {"row", pixels.row},         {"channel", pixels.channel},
                   {"a", json_of(pixels.left)}, {"b", json_of(pixels.right)}};
  return json;
}

void append(std::string& list, std::size_t count, const std::string& words) {
  if (count > 0) list += (list.empty() ? "" : ", ") + std::to_string(count) + " " + words;
}

}  // namespace

void CompareReport::add(const std::filesystem::path& name, const FileComparison& comparison) {
  if (comparison.verdict == Verdict::equal) {
    ++equal_;
    return;
  }
  const bool failed = comparison.verdict == Verdict::failed;
  ++(failed ? failed_ : different_);
  if (failed) {
    complain(comparison.reason);
  } else {
    tell(name, text_of(comparison));
  }
  Json file;
  file["name"] = json_of(name);
  file["result"] = failed ? "failed" : "different";
  if (!comparison.reason.empty()) file["reason"] = comparison.reason;
  if (comparison.pixels) file.update(json_of(*comparison.pixels));
  if (options_.json) files_.push_back(std::move(file));
}

void CompareReport::add_lone(const FilePair& pair) {
  ++(pair.in_left ? only_left_ : only_right_);
  tell(pair.name, "only in " + text_of(pair.in_left ? options_.left : options_.right));
  if (!options_.json) return;
  files_.push_back(
      {{"name", json_of(pair.name)}, {"result", pair.in_left ? "only in a" : "only in b"}});
}

int CompareReport::finish(bool interrupted) const {
  const bool all_equal = different_ + only_left_ + only_right_ + failed_ == 0 && !interrupted;
  if (options_.json) {
    Json json;
    json["a"] = json_of(options_.left);
    json["b"] = json_of(options_.right);
    json["equal"] = all_equal;
    json["complete"] = !interrupted;
    json["equal_files"] = equal_;
    json["files"] = files_;
    std::cout << text_of(json) << std::flush;
  } else {
    std::cout << summary() << (interrupted ? "; stopped before the end" : "") << std::endl;
  }
  if (interrupted) return exit_interrupted;
  if (failed_ > 0) return exit_nothing_done;
  return all_equal ? exit_success : exit_some_failed;
}

void CompareReport::tell(const std::filesystem::path& name, const std::string& line) const {
  if (!options_.json) std::cout << printable(name) + ": " + printable(line) + "\n";
}

std::string CompareReport::summary() const {
  std::string text;
  append(text, equal_, equal_ == 1 ? "file is equal" : "files are equal");
  append(text, different_, different_ == 1 ? "differs" : "differ");
  append(text, only_left_, "only in " + printable(options_.left));
  append(text, only_right_, "only in " + printable(options_.right));
  append(text, failed_, "could not be compared");
  return text;
}

}  // namespace kv::polarization

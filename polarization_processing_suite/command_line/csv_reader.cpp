// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/csv_reader.h"

#include <algorithm>
#include <utility>

#include "kv/polarization/fault.h"
#include "toolkit/api/shown_text.h"

namespace kv::polarization {
namespace {

std::string trimmed(const std::string& text) {
  const auto first = text.find_first_not_of(" \t\r");
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

/// The fields of a line. A quote within quotes is written twice.
std::vector<std::string> fields_of(const std::string& line) {
  std::vector<std::string> fields(1);
  bool quoted = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '"') {
      if (quoted && i + 1 < line.size() && line[i + 1] == '"') {
        fields.back() += '"';
        ++i;
      } else {
        quoted = !quoted;
      }
    } else if (line[i] == ',' && !quoted) {
      fields.emplace_back();
    } else {
      fields.back() += line[i];
    }
  }
  for (std::string& field : fields) field = trimmed(field);
  return fields;
}

}  // namespace

CsvReader::CsvReader(const std::filesystem::path& file, Form form)
    : file_(file), form_(std::move(form)), stream_(file) {
  if (!stream_) refuse("cannot be opened; check the path, and that you may read it");
  std::string line;
  if (next_line(line)) names_ = fields_of(line);
  for (const std::string& name : form_.needed) {
    if (std::ranges::find(names_, name) == names_.end()) {
      refuse("its first line has no column '" + name + "'; it must be " + form_.columns);
    }
  }
}

bool CsvReader::next() {
  std::string line;
  if (!next_line(line)) return false;
  fields_ = fields_of(line);
  return true;
}

std::string CsvReader::field(const std::string& column) const {
  const auto index = static_cast<std::size_t>(std::ranges::find(names_, column) - names_.begin());
  return index < fields_.size() ? fields_[index] : "";
}

void CsvReader::refuse(const std::string& why) const {
  const std::string place = number_ == 0 ? "" : ", line " + std::to_string(number_);
  throw Fault(FaultKind::file, form_.title + " " + file_.string() + place + ": " + shown(why, 400));
}

/// The next line that is not left out.
bool CsvReader::next_line(std::string& line) {
  while (std::getline(stream_, line)) {
    ++number_;
    line = trimmed(line);
    if (number_ == 1 && line.starts_with("\xEF\xBB\xBF")) line.erase(0, 3);  // of spreadsheets
    if (!line.empty() && line[0] != '#') return true;
  }
  if (stream_.bad()) refuse("cannot be read on; its disk, or a lack of memory, is in the way");
  return false;
}

}  // namespace kv::polarization

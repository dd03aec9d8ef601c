// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace kv::polarization {

/// A text of comma-separated values: a line of column names in any order, then lines of fields.
/// Texts may stand in double quotes, blanks around a field do not count, and empty lines and those
/// that begin with # are left out.
class CsvReader {
 public:
  struct Form {
    std::string title;                  ///< what messages call it, such as "the manifest"
    std::string columns;                ///< the first line as it would be right
    std::vector<std::string> needed{};  ///< columns that there must be
  };

  /// Opens the file and reads its first line. Throws Fault as refuse() does.
  CsvReader(const std::filesystem::path& file, Form form);

  /// Goes on to the next line of fields; false behind the last one.
  bool next();

  /// A field of the line at hand; empty where the line ends before that column, or has none.
  std::string field(const std::string& column) const;

  /// Throws Fault of kind file that names the file, the line at hand, and the reason.
  [[noreturn]] void refuse(const std::string& why) const;

 private:
  bool next_line(std::string& line);

  std::filesystem::path file_;
  Form form_;
  std::ifstream stream_;
  int number_ = 0;
  std::vector<std::string> names_;
  std::vector<std::string> fields_;
};

}  // namespace kv::polarization

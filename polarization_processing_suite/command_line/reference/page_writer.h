// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kv::polarization {

/// A word that the reader may type, and what stands for its value, such as --width and N.
struct Term {
  std::string word;
  std::string value{};
};

/// Turns pages of the manual into a form of text. Texts are those of records: paragraphs with empty
/// lines between them, whose words may stand in backticks, and indented lines that stay as they
/// are.
class PageWriter {
 public:
  virtual ~PageWriter() = default;
  PageWriter() = default;
  PageWriter(const PageWriter&) = delete;
  PageWriter& operator=(const PageWriter&) = delete;

  /// Begins a page: the words of the command line that it is of, and one line without a full stop.
  virtual void begin(const std::string& name, const std::string& summary) = 0;
  virtual void section(const std::string& heading) = 0;
  virtual void text(const std::string& text) = 0;
  virtual void synopsis(const std::string& usage) { command_lines({usage}); }
  virtual void command_lines(const std::vector<std::string>& lines) = 0;

  /// Terms that mean the same, and what they mean.
  virtual void entry(const std::vector<Term>& terms, const std::string& text) = 0;

  /// Tells where more stands, in forms whose pages are apart.
  virtual void refer(const std::string& /*name*/) {}

  /// What was written since the last call.
  std::string take() { return std::exchange(written_, {}); }

 protected:
  std::string written_;
};

std::unique_ptr<PageWriter> make_text_writer(std::size_t width);
std::unique_ptr<PageWriter> make_man_writer(const std::string& version);
std::unique_ptr<PageWriter> make_markdown_writer();

}  // namespace kv::polarization

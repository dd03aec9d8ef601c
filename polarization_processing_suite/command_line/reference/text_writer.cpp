// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/options/text_layout.h"
#include "command_line/options/values.h"
#include "command_line/reference/page_writer.h"

namespace kv::polarization {
namespace {

constexpr std::size_t kIndent = 4;

class TextWriter : public PageWriter {
 public:
  explicit TextWriter(std::size_t width) : width_(width) {}

  void begin(const std::string& name, const std::string& summary) override {
    if (!written_.empty()) written_ += "\n" + std::string(width_, '-') + "\n\n";
    written_ += in_capitals(name) + "\n" + wrapped(summary + ".", kIndent, width_);
  }

  void section(const std::string& heading) override {
    written_ += "\n" + in_capitals(heading) + "\n";
    is_first_ = true;
  }

  void text(const std::string& text) override { add_blocks(text, kIndent); }

  void command_lines(const std::vector<std::string>& lines) override {
    separate();
    for (const std::string& line : lines) written_ += indented(line, kIndent);
  }

  void entry(const std::vector<Term>& terms, const std::string& text) override {
    std::vector<std::string> shown;
    shown.reserve(terms.size());
    for (const Term& term : terms) {
      shown.push_back(term.word + (term.value.empty() || term.word.empty() ? "" : " ") +
                      term.value);
    }
    separate();
    written_ += indented(comma_list(shown), kIndent);
    is_first_ = true;
    add_blocks(text, 2 * kIndent);
  }

 private:
  /// An empty line between the parts of a section.
  void separate() {
    if (!is_first_) written_ += "\n";
    is_first_ = false;
  }

  void add_blocks(const std::string& text, std::size_t indent) {
    for (const TextBlock& block : blocks_of(text)) {
      separate();
      written_ += block.verbatim ? indented(block.text, indent + kIndent)
                                 : wrapped(plain(block.text), indent, width_);
    }
  }

  std::size_t width_;
  bool is_first_ = true;
};

}  // namespace

std::unique_ptr<PageWriter> make_text_writer(std::size_t width) {
  return std::make_unique<TextWriter>(width);
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/options/text_layout.h"
#include "command_line/reference/page_writer.h"

namespace kv::polarization {
namespace {

std::string escaped_markdown(const std::string& text) {
  std::string markdown;
  for (const char letter : text) {
    if (std::string_view("\\`*_[]<>#|").find(letter) != std::string_view::npos) markdown += '\\';
    markdown += letter;
  }
  return markdown;
}

std::string code(const std::string& text) { return "`" + text + "`"; }

std::string markdown_sentence(const std::string& text) {
  std::string markdown;
  for (const TextSpan& span : spans_of(text)) {
    markdown += span.code ? code(span.text) : escaped_markdown(span.text);
  }
  return markdown;
}

std::string fenced(const std::string& lines) { return "```text\n" + lines + "\n```\n"; }

/// All pages in one: the first is that of the tool, the others are its sections.
class MarkdownWriter : public PageWriter {
 public:
  void begin(const std::string& name, const std::string& summary) override {
    const bool is_first = written_.empty();
    level_ = is_first ? "##" : "###";
    written_ += (is_first ? "# " : "\n## ") + name + "\n\n" + escaped_markdown(summary) + ".\n";
  }

  void section(const std::string& heading) override {
    written_ += "\n" + level_ + " " + heading + "\n";
  }

  void text(const std::string& text) override {
    for (const TextBlock& block : blocks_of(text)) {
      written_ +=
          "\n" + (block.verbatim ? fenced(block.text) : markdown_sentence(block.text) + "\n");
    }
  }

  void command_lines(const std::vector<std::string>& lines) override {
    std::string joined;
    for (const std::string& line : lines) joined += (joined.empty() ? "" : "\n") + line;
    written_ += "\n" + fenced(joined);
  }

  void entry(const std::vector<Term>& terms, const std::string& text) override {
    std::string line;
    for (const Term& term : terms) {
      const std::string gap = term.word.empty() || term.value.empty() ? "" : " ";
      line += (line.empty() ? "" : ", ") + code(term.word + gap + term.value);
    }
    written_ += "\n- " + line;
    std::string before = ": ";
    for (const TextBlock& block : blocks_of(text)) {
      written_ += before;
      const std::string lines =
          block.verbatim ? fenced(block.text) : markdown_sentence(block.text) + "\n";
      // What belongs to an item is indented as its text is.
      const std::string shifted = indented(lines, 2);
      written_ += before == ": " ? shifted.substr(2) : shifted;
      before = "\n";
    }
  }

 private:
  std::string level_;
};

}  // namespace

std::unique_ptr<PageWriter> make_markdown_writer() { return std::make_unique<MarkdownWriter>(); }

}  // namespace kv::polarization

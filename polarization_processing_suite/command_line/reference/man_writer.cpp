// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstdint>
#include <sstream>

#include "command_line/options/text_layout.h"
#include "command_line/reference/page_writer.h"

namespace kv::polarization {
namespace {

/// The code point of the UTF-8 character at the text's start, and removes it from there.
std::uint32_t take_code_point(std::string_view& text) {
  const auto first = static_cast<unsigned char>(text[0]);
  const std::size_t size = first < 0xC0 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  std::uint32_t point = size == 1 ? first : first & (0xFFU >> (size + 1));
  for (std::size_t i = 1; i < std::min(size, text.size()); ++i) {
    point = point << 6 | (static_cast<unsigned char>(text[i]) & 0x3FU);
  }
  text.remove_prefix(std::min(size, text.size()));
  return point;
}

std::string glyph(std::uint32_t point) {
  std::ostringstream name;
  name << std::uppercase << std::hex << point;
  const std::string digits = name.str();
  return "\\[u" + std::string(digits.size() < 4 ? 4 - digits.size() : 0, '0') + digits + "]";
}

/// Any text as roff prints it as it is. A plain dash would be a hyphen, at which lines break and
/// which searches do not find, and quotes would be curled.
std::string escaped_roff(std::string_view text) {
  std::string roff;
  while (!text.empty()) {
    const std::uint32_t point = take_code_point(text);
    switch (point) {
      case '\\':
        roff += "\\e";
        break;
      case ',':
        roff += ",\\:";  // a place where lines may break
        break;
      case '-':
        roff += "\\-";
        break;
      case '\'':
        roff += "\\(aq";
        break;
      case '`':
        roff += "\\(ga";
        break;
      case '"':
        roff += "\\(dq";
        break;
      case '^':
        roff += "\\(ha";
        break;
      case '~':
        roff += "\\(ti";
        break;
      default:
        roff += point < 0x80 ? std::string(1, static_cast<char>(point)) : glyph(point);
    }
  }
  // A line that begins with a full stop would be a request.
  return roff.starts_with(".") ? "\\&" + roff : roff;
}

std::string bold(const std::string& word) { return "\\fB" + escaped_roff(word) + "\\fR"; }
std::string italic(const std::string& word) { return "\\fI" + escaped_roff(word) + "\\fR"; }

std::string roff_sentence(const std::string& text) {
  std::string roff;
  for (const TextSpan& span : spans_of(text)) {
    roff += span.code ? bold(span.text) : escaped_roff(span.text);
  }
  return roff + "\n";
}

std::string roff_lines(const std::string& lines) {
  std::string roff;
  std::istringstream stream(lines);
  for (std::string line; std::getline(stream, line);) roff += escaped_roff(line) + "\n";
  return ".RS 4\n.nf\n" + roff + ".fi\n.RE\n";
}

class ManWriter : public PageWriter {
 public:
  explicit ManWriter(std::string version) : version_(std::move(version)) {}

  void begin(const std::string& name, const std::string& summary) override {
    std::string title = name;
    std::ranges::replace(title, ' ', '-');
    written_ += ".TH \"" + escaped_roff(title) + R"(" 1 "" ")" + escaped_roff(version_) + "\"\n";
    // Without hyphens and stretched spaces, which hinder copying and searching.
    written_ += ".nh\n.ad l\n";
    section("Name");
    written_ += escaped_roff(title) + " \\- " + escaped_roff(summary) + "\n";
  }

  void section(const std::string& heading) override {
    written_ += ".SH " + escaped_roff(in_capitals(heading)) + "\n";
    is_first_ = true;
  }

  /// What stands for something else is in capitals.
  void synopsis(const std::string& usage) override {
    std::istringstream words(usage);
    std::string line;
    for (std::string word; words >> word;) {
      const bool is_literal = word.find_first_of("abcdefghijklmnopqrstuvwxyz") != std::string::npos;
      line += (line.empty() ? "" : " ") + (is_literal ? bold(word) : italic(word));
    }
    written_ += line + "\n";
  }

  void text(const std::string& text) override {
    for (const TextBlock& block : blocks_of(text)) {
      separate();
      written_ += block.verbatim ? roff_lines(block.text) : roff_sentence(block.text);
    }
  }

  void command_lines(const std::vector<std::string>& lines) override {
    std::string joined;
    for (const std::string& line : lines) joined += line + "\n";
    separate();
    written_ += roff_lines(joined);
  }

  void entry(const std::vector<Term>& terms, const std::string& text) override {
    std::string line;
    for (const Term& term : terms) {
      line += line.empty() ? "" : ", ";
      if (!term.word.empty()) line += bold(term.word);
      if (!term.value.empty()) line += (term.word.empty() ? "" : " ") + italic(term.value);
    }
    written_ += ".TP\n" + line + "\n";
    bool is_first = true;
    for (const TextBlock& block : blocks_of(text)) {
      if (!is_first) written_ += ".IP\n";
      is_first = false;
      written_ += block.verbatim ? roff_lines(block.text) : roff_sentence(block.text);
    }
  }

  void refer(const std::string& name) override {
    section("See also");
    written_ += ".BR " + escaped_roff(name) + " (1)\n";
  }

 private:
  /// Between paragraphs, not between a heading and the first one.
  void separate() {
    if (!is_first_) written_ += ".PP\n";
    is_first_ = false;
  }

  std::string version_;
  bool is_first_ = true;
};

}  // namespace

std::unique_ptr<PageWriter> make_man_writer(const std::string& version) {
  return std::make_unique<ManWriter>(version);
}

}  // namespace kv::polarization

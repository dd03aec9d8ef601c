// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/options/text_layout.h"

#include <algorithm>
#include <sstream>

#include "platform/terminal.h"

namespace kv::polarization {
namespace {

constexpr int kUsualWidth = 80;
constexpr int kLeastWidth = 40;  ///< narrower columns of words cannot be read

std::size_t leading_spaces(const std::string& line) {
  return std::min(line.find_first_not_of(' '), line.size());
}

std::string without_common_indent(const std::vector<std::string>& lines) {
  std::size_t common = std::string::npos;
  for (const std::string& line : lines) {
    if (!line.empty()) common = std::min(common, leading_spaces(line));
  }
  std::string text;
  for (const std::string& line : lines) {
    text += (text.empty() ? "" : "\n") + (line.empty() ? "" : line.substr(common));
  }
  return text;
}

std::string joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += (text.empty() ? "" : " ") + line;
  return text;
}

bool is_code(std::string_view word) {
  const bool is_option =
      word.starts_with("-") && word.find_first_not_of("-0123456789.,") != std::string_view::npos;
  return is_option || word.find_first_of("_{") != std::string_view::npos || word.starts_with("*.");
}

/// Where code in a word begins and ends; nowhere if the word is none.
struct CodeRange {
  std::size_t begin = 0;
  std::size_t end = 0;
};

CodeRange code_in(std::string_view word) {
  const std::size_t begin = std::min(word.find_first_not_of("(\"`"), word.size());
  const std::string_view rest = word.substr(begin);
  if (const std::size_t quote = rest.find('\'', 1);
      rest.starts_with("'") && quote != std::string_view::npos) {
    return {begin, begin + quote + 1};
  }
  const std::size_t size = rest.find_last_not_of(".,:;)\"'`") + 1;
  const bool is_marked = begin > 0 && word[begin - 1] == '`';
  if (size > 0 && (is_marked || is_code(rest.substr(0, size)))) return {begin, begin + size};
  return {};
}

/// The word, or its parts behind commas where it has more columns than there is room for.
std::vector<std::string> breakable(const std::string& word, std::size_t room) {
  if (columns_of(word) <= room) return {word};
  std::vector<std::string> parts;
  for (std::size_t begin = 0; begin < word.size();) {
    const std::size_t end = std::min(word.find(',', begin), word.size() - 1) + 1;
    parts.push_back(word.substr(begin, end - begin));
    begin = end;
  }
  return parts;
}

}  // namespace

std::size_t text_width() {
  const int columns = platform::output_columns();
  return static_cast<std::size_t>(columns == 0 ? kUsualWidth : std::max(columns, kLeastWidth));
}

std::size_t columns_of(std::string_view text) {
  return static_cast<std::size_t>(std::ranges::count_if(
      text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }));
}

std::string in_capitals(std::string text) {
  std::ranges::transform(text, text.begin(), [](char letter) {
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
  });
  return text;
}

std::string wrapped(const std::string& text, std::size_t indent, std::size_t width) {
  std::string lines;
  std::string line;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    std::string gap = " ";
    for (const std::string& part : breakable(word, width - indent)) {
      if (!line.empty() && columns_of(line + gap + part) > width) {
        lines += line + "\n";
        line.clear();
      }
      line += (line.empty() ? std::string(indent, ' ') : gap) + part;
      gap.clear();
    }
  }
  return lines + line + "\n";
}

std::string beside(const std::string& term, const std::string& text, std::size_t indent,
                   std::size_t width) {
  std::string lines = wrapped(text, indent, width);
  const std::size_t end = 2 + columns_of(term);
  if (end + 2 > indent) return "  " + term + "\n" + lines;
  return "  " + term + lines.substr(end);
}

std::string indented(const std::string& lines, std::size_t indent) {
  std::string text;
  std::istringstream stream(lines);
  for (std::string line; std::getline(stream, line);) {
    text += (line.empty() ? "" : std::string(indent, ' ') + line) + "\n";
  }
  return text;
}

std::vector<TextBlock> blocks_of(const std::string& text) {
  std::vector<TextBlock> blocks;
  std::vector<std::string> lines;
  const auto finish = [&] {
    if (lines.empty()) return;
    const bool verbatim = lines[0].starts_with(" ");
    blocks.push_back({verbatim, verbatim ? without_common_indent(lines) : joined(lines)});
    lines.clear();
  };
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    const bool changes = !lines.empty() && line.starts_with(" ") != lines[0].starts_with(" ");
    if (line.empty() || changes) finish();
    if (!line.empty()) lines.push_back(line);
  }
  finish();
  return blocks;
}

std::vector<TextSpan> spans_of(const std::string& sentence) {
  std::vector<TextSpan> spans;
  const auto add = [&spans](bool code, std::string_view text) {
    for (const char letter : text) {
      if (letter == '`') continue;
      if (spans.empty() || spans.back().code != code) spans.push_back({code, ""});
      spans.back().text += letter;
    }
  };
  for (std::string_view rest = sentence; !rest.empty();) {
    const std::string_view word = rest.substr(0, std::max<std::size_t>(rest.find(' '), 1));
    const auto [begin, end] = code_in(word);
    add(false, word.substr(0, begin));
    add(true, word.substr(begin, end - begin));
    add(false, word.substr(end));
    rest.remove_prefix(word.size());
  }
  return spans;
}

std::string plain(const std::string& sentence) {
  std::string text;
  for (const TextSpan& span : spans_of(sentence)) text += span.text;
  return text;
}

}  // namespace kv::polarization

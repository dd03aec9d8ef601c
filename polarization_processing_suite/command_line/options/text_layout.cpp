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
  return is_option || word.find('_') != std::string_view::npos || word.starts_with("*.");
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
  std::size_t columns = 0;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    if (!line.empty() && columns + 1 + columns_of(word) > width) {
      lines += line + "\n";
      line.clear();
    }
    line += line.empty() ? std::string(indent, ' ') + word : " " + word;
    columns = columns_of(line);
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
    if (text.empty()) return;
    if (spans.empty() || spans.back().code != code) spans.push_back({code, ""});
    spans.back().text += text;
  };
  for (std::string_view rest = sentence; !rest.empty();) {
    const std::string_view word = rest.substr(0, std::max<std::size_t>(rest.find(' '), 1));
    const std::size_t begin = std::min(word.find_first_not_of("(\"'`"), word.size());
    const std::size_t end = std::max(word.find_last_not_of(".,:;)\"'`") + 1, begin);
    const std::string_view core = word.substr(begin, end - begin);
    const bool is_marked = begin > 0 && word[begin - 1] == '`';
    const std::size_t mark = is_marked ? 1 : 0;
    add(false, word.substr(0, begin - mark));
    add(is_marked || is_code(core), core);
    add(false, word.substr(std::min(end + mark, word.size())));
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

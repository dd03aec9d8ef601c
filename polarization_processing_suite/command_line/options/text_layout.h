// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kv::polarization {

/// Columns for text on standard output: those of the terminal, 80 elsewhere.
std::size_t text_width();

/// Columns that UTF-8 text takes on a terminal, each character counted as one.
std::size_t columns_of(std::string_view text);

/// With capitals for its letters a to z.
std::string in_capitals(std::string text);

/// The text's words in lines that reach at most to column `width`, each behind `indent` spaces and
/// with its end of line. A word that is too long for a line is broken behind its commas.
std::string wrapped(const std::string& text, std::size_t indent, std::size_t width);

/// A term behind two spaces, and what is told of it, from column `indent` on; on the lines below
/// when the term reaches that far.
std::string beside(const std::string& term, const std::string& text, std::size_t indent,
                   std::size_t width);

/// The lines behind `indent` spaces, each with its end of line; empty ones stay empty.
std::string indented(const std::string& lines, std::size_t indent);

struct TextBlock {
  bool verbatim;     ///< lines that stay as they are, their common indent removed
  std::string text;  ///< without an end of line at its end
};

/// The blocks of a text: paragraphs with empty lines between them, and runs of indented lines.
std::vector<TextBlock> blocks_of(const std::string& text);

/// A piece of a sentence. Code is what stands in backticks or single quotes, and words such as
/// --width, frame_dolp.png, {page} and *.tiff. Backticks are left out, quotes are not.
struct TextSpan {
  bool code;
  std::string text;
};

std::vector<TextSpan> spans_of(const std::string& sentence);

/// The sentence without backticks.
std::string plain(const std::string& sentence);

}  // namespace kv::polarization

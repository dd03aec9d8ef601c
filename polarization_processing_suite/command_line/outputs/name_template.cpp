// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/outputs/name_template.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "command_line/options/values.h"
#include "command_line/path_text.h"
#include "kv/image_files/image_format.h"
#include "kv/polarization/fault.h"
#include "platform/file_names.h"

namespace kv::polarization {
namespace {

constexpr std::size_t kLongestName = 255;
constexpr std::size_t kMostDigits = 18;

std::string padded(std::size_t number, std::size_t width) {
  const std::string digits = std::to_string(number);
  return std::string(width - std::min(width, digits.size()), '0') + digits;
}

struct Placeholder {
  std::string_view name;
  bool is_number;
  std::string (*value)(const NameParts& parts, std::size_t width);
};

constexpr std::array<Placeholder, 5> kPlaceholders = {{
    {"name", false, [](const NameParts& parts, std::size_t) { return parts.name; }},
    {"folder", false, [](const NameParts& parts, std::size_t) { return parts.folder; }},
    {"plane", false, [](const NameParts& parts, std::size_t) { return parts.plane; }},
    {"page", true,
     [](const NameParts& parts, std::size_t width) {
       return padded(parts.page, std::max(width, std::to_string(parts.pages).size()));
     }},
    {"index", true,
     [](const NameParts& parts, std::size_t width) { return padded(parts.index, width); }},
}};

const Placeholder* placeholder_named(std::string_view name) {
  const auto* const found = std::ranges::find(kPlaceholders, name, &Placeholder::name);
  return found == kPlaceholders.end() ? nullptr : found;
}

[[noreturn]] void refuse(const std::string& text, const std::string& why) {
  std::string line = "'" + text + "' cannot name results: " + why + "; placeholders are ";
  for (const Placeholder& placeholder : kPlaceholders) {
    line += "{" + std::string(placeholder.name) + "}, ";
  }
  throw BadValue(line + "numbers with a width as {page:05}, and {{ and }} are braces");
}

/// What is wrong with a template's own characters and folders, placeholders being what they may.
void check_path(const std::string& text) {
  if (text.empty()) refuse(text, "it is empty");
  if (text.front() == '/')
    refuse(text, "results are named within the output folder, without / before");
  if (text.back() == '/') refuse(text, "it ends with a folder");
  for (const char character : text) {
    if (static_cast<unsigned char>(character) < 0x20 || character == 0x7F) {
      refuse(text, "it has a control character");
    }
  }
  for (const std::string_view name : names_of(text)) {
    if (name.empty()) refuse(text, "it has a folder without a name");
    if (name == "." || name == "..") {
      refuse(text, "the folder " + std::string(name) + " cannot be in it");
    }
  }
}

void check_literal(const std::string& text, const std::string& literal) {
  const std::size_t forbidden = literal.find_first_of(platform::kForbiddenInNames);
  if (forbidden != std::string::npos) {
    refuse(text,
           std::string("no name may hold ") + literal[forbidden] + ", folders have / between them");
  }
}

/// The width that the inside of a placeholder's braces asks for; 0 when it asks for none.
std::size_t width_asked_by(const std::string& text, const std::string& inside) {
  const std::size_t colon = inside.find(':');
  const std::string name = inside.substr(0, colon);
  const Placeholder* placeholder = placeholder_named(name);
  if (placeholder == nullptr) refuse(text, "there is no placeholder {" + name + "}");
  if (colon == std::string::npos) return 0;
  if (!placeholder->is_number) refuse(text, "{" + name + "} has no width");
  try {
    const long long width = whole_number_of(inside.substr(colon + 1), 1, kMostDigits);
    return static_cast<std::size_t>(width);
  } catch (const BadValue& error) {
    refuse(text, "of the width, " + std::string(error.what()));
  }
}

std::size_t longest_ending() {
  std::size_t longest = 0;
  for (const ImageFormatTraits& traits : image_formats()) {
    longest = std::max({longest, traits.endings[0].size(), traits.picture_ending.size()});
  }
  return longest;
}

}  // namespace

NameTemplate::NameTemplate(const std::string& text) : text_(text) {
  check_path(text);
  Piece piece{};
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool is_doubled = i + 1 < text.size() && text[i + 1] == text[i];
    if (text[i] != '{' && text[i] != '}') {
      piece.before += text[i];
    } else if (is_doubled) {
      piece.before += text[i++];
    } else if (text[i] == '}') {
      refuse(text, "it has a } without {");
    } else {
      const std::size_t end = text.find('}', i);
      if (end == std::string::npos) refuse(text, "it has a { without }");
      const std::string inside = text.substr(i + 1, end - i - 1);
      piece.placeholder = inside.substr(0, inside.find(':'));
      piece.width = width_asked_by(text, inside);
      check_literal(text, piece.before);
      pieces_.push_back(piece);
      piece = {};
      i = end;
    }
  }
  check_literal(text, piece.before);
  pieces_.push_back(piece);
}

bool NameTemplate::has(const std::string& placeholder) const {
  return std::ranges::find(pieces_, placeholder, &Piece::placeholder) != pieces_.end();
}

std::filesystem::path NameTemplate::path_of(const NameParts& parts) const {
  std::string text;
  for (const Piece& piece : pieces_) {
    text += piece.before;
    const Placeholder* placeholder = placeholder_named(piece.placeholder);
    if (placeholder != nullptr) text += placeholder->value(parts, piece.width);
  }
  const auto refuse_name = [&](const std::string& why) {
    throw Fault(FaultKind::argument, "the name '" + text + "' that '" + text_ + "' gives " + why);
  };
  if (text.empty() || text.back() == '/') refuse_name("is empty; put {name} or {index} into it");
  static const std::size_t ending = longest_ending();
  std::filesystem::path path;
  std::size_t size = 0;
  for (const std::string_view name : names_of(text)) {
    if (name == "." || name == "..") refuse_name("leads out of its folder; put more into it");
    if (!name.empty()) path /= kv::polarization::path_of(std::string(name));
    size = std::max(size, name.size());
  }
  if (std::max(size, names_of(text).back().size() + ending) > kLongestName) {
    refuse_name("is longer than the " + std::to_string(kLongestName) +
                " bytes that file systems take, ending included; choose a shorter one");
  }
  return path;
}

}  // namespace kv::polarization

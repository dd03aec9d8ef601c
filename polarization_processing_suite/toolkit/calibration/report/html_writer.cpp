// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/report/html_writer.h"

namespace kv::polarization {
namespace {

constexpr std::size_t kLongestText = 200;

bool continues_a_sign(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

}  // namespace

std::string escaped(std::string_view text) {
  std::string html;
  for (const char c : text) {
    if (c == '&') {
      html += "&amp;";
    } else if (c == '<') {
      html += "&lt;";
    } else if (c == '>') {
      html += "&gt;";
    } else if (c == '"') {
      html += "&quot;";
    } else if (c == '\'') {
      html += "&#39;";
    } else if ((c >= 0 && c < ' ' && c != '\n' && c != '\t') || c == '\x7F') {
      html += "\uFFFD";
    } else {
      html += c;
    }
  }
  return html;
}

std::string shortened(std::string_view text) {
  if (text.size() <= kLongestText) return std::string(text);
  std::size_t head = kLongestText / 2;
  std::size_t tail = text.size() - kLongestText / 2;
  while (head > 0 && continues_a_sign(text[head])) --head;
  while (tail < text.size() && continues_a_sign(text[tail])) ++tail;
  return std::string(text.substr(0, head)) + " … " + std::string(text.substr(tail));
}

void HtmlWriter::start(std::string_view tag, Attributes attributes) {
  page_ += '<';
  page_ += tag;
  for (const auto& [name, value] : attributes) {
    page_ += ' ';
    page_ += name;
    page_ += "=\"";
    page_ += escaped(value);
    page_ += '"';
  }
}

HtmlWriter::Element::~Element() {
  writer_.page_ += "</";
  writer_.page_ += tag_;
  writer_.page_ += ">\n";
}

HtmlWriter::Element HtmlWriter::open(std::string_view tag, Attributes attributes) {
  start(tag, attributes);
  page_ += '>';
  return {*this, tag};
}

void HtmlWriter::element(std::string_view tag, std::string_view content, Attributes attributes) {
  const Element element = open(tag, attributes);
  text(content);
}

void HtmlWriter::empty(std::string_view tag, Attributes attributes) {
  start(tag, attributes);
  page_ += "/>\n";
}

}  // namespace kv::polarization

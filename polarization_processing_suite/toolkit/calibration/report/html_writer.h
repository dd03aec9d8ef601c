// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace kv::polarization {

/// Text as HTML shows it. Control characters become the replacement character.
std::string escaped(std::string_view text);

/// At most some 200 bytes of UTF-8: what is longer lacks its middle.
std::string shortened(std::string_view text);

/// Names are literals of the code; values are escaped.
using Attributes = std::initializer_list<std::pair<std::string_view, std::string>>;

/// Puts HTML and SVG together. All text goes through escaped().
class HtmlWriter {
 public:
  /// An element that ends where the object does.
  class Element {
   public:
    Element(HtmlWriter& writer, std::string_view tag) : writer_(writer), tag_(tag) {}
    ~Element();
    Element(const Element&) = delete;
    Element& operator=(const Element&) = delete;

   private:
    HtmlWriter& writer_;
    std::string_view tag_;
  };

  [[nodiscard]] Element open(std::string_view tag, Attributes attributes = {});
  void element(std::string_view tag, std::string_view content, Attributes attributes = {});
  void text(std::string_view text) { page_ += escaped(text); }

  /// Of elements without content, in HTML and SVG.
  void empty(std::string_view tag, Attributes attributes);

  /// Text of somebody else: shortened, and kept from turning the direction of what follows.
  void foreign(std::string_view text) { element("bdi", shortened(text)); }

  /// For what is HTML or CSS of the code itself.
  void literal(std::string_view html) { page_ += html; }

  std::string take() { return std::move(page_); }

 private:
  void start(std::string_view tag, Attributes attributes);

  std::string page_;
};

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/report/sections.h"

namespace kv::polarization {

void add_headings(HtmlWriter& page, std::initializer_list<std::string_view> headings) {
  const auto head = page.open("thead");
  const auto row = page.open("tr");
  for (const std::string_view heading : headings) page.element("th", heading, {{"scope", "col"}});
}

Table::Table(HtmlWriter& page, std::initializer_list<std::string_view> headings)
    : page_(page), frame_(page.open("div", {{"class", "wide"}})), table_(page.open("table")) {
  add_headings(page, headings);
}

void Table::row(std::initializer_list<std::string_view> cells) {
  const auto row = page_.open("tr");
  bool first = true;
  for (const std::string_view cell : cells) {
    if (first) {
      page_.element("th", cell, {{"scope", "row"}});
    } else {
      page_.element("td", cell);
    }
    first = false;
  }
}

}  // namespace kv::polarization

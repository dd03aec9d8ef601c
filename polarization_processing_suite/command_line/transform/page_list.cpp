// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/transform/page_list.h"

#include <set>

#include "command_line/options/values.h"

namespace kv::polarization {
namespace {

constexpr long long kLastPage = 10'000'000;

std::size_t page_of(const std::string& text) {
  return static_cast<std::size_t>(whole_number_of(text, 1, kLastPage));
}

}  // namespace

std::vector<std::size_t> page_list_of(const std::string& text) {
  std::set<std::size_t> pages;
  for (const std::string& item : split_list(text)) {
    const bool has_dots = item.find("..") != std::string::npos;
    const std::size_t middle = has_dots ? item.find("..") : item.find('-');
    const std::size_t first = page_of(item.substr(0, middle));
    const std::size_t last =
        middle == std::string::npos ? first : page_of(item.substr(middle + (has_dots ? 2 : 1)));
    if (last < first) throw BadValue("'" + item + "' counts down; write the lower page first");
    for (std::size_t page = first; page <= last; ++page) pages.insert(page);
  }
  if (pages.empty()) throw BadValue("the list is empty; name a page, such as 1 or 1..10");
  return {pages.begin(), pages.end()};
}

std::string page_list_text(const std::vector<std::size_t>& pages) {
  std::string text;
  for (std::size_t i = 0; i < pages.size();) {
    std::size_t end = i + 1;
    while (end < pages.size() && pages[end] == pages[end - 1] + 1) ++end;
    text += (text.empty() ? "" : ",") + std::to_string(pages[i]);
    if (end - i > 1) text += ".." + std::to_string(pages[end - 1]);
    i = end;
  }
  return text;
}

}  // namespace kv::polarization

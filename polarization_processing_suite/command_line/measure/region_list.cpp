// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/measure/region_list.h"

#include <set>

#include "command_line/csv_reader.h"
#include "command_line/options/common_options.h"
#include "command_line/options/values.h"

namespace kv::polarization {

NamedRegion named_region_of(const std::string& text) {
  const auto equals = text.rfind('=');
  if (equals == std::string::npos) return {text, rectangle_of(text)};
  if (equals == 0) throw BadValue("'" + text + "' has no name before the equals sign");
  return {text.substr(0, equals), rectangle_of(text.substr(equals + 1))};
}

std::vector<NamedRegion> read_regions(const std::filesystem::path& file) {
  CsvReader list(file, {.title = "the list of regions",
                        .columns = "name,column,row,width,height",
                        .needed = {"column", "row", "width", "height"}});
  std::vector<NamedRegion> regions;
  while (list.next()) {
    const std::string numbers = list.field("column") + "," + list.field("row") + "," +
                                list.field("width") + "," + list.field("height");
    const std::string name = list.field("name");
    try {
      regions.push_back({name.empty() ? numbers : name, rectangle_of(numbers)});
    } catch (const BadValue& bad) {
      list.refuse(bad.what());
    }
  }
  if (regions.empty()) list.refuse("names no regions; write a line for each");
  return regions;
}

void check_names(const std::vector<NamedRegion>& regions) {
  std::set<std::string> names;
  for (const NamedRegion& region : regions) {
    if (!names.insert(region.name).second) {
      throw UsageError("there are two regions '" + region.name + "'; give each a name of its own");
    }
  }
}

}  // namespace kv::polarization

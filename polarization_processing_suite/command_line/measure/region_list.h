// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "command_line/measure/measurement.h"

namespace kv::polarization {

/// [NAME=]X,Y,W,H; a region without a name is called by its numbers. Throws BadValue.
NamedRegion named_region_of(const std::string& text);

/// The regions of a file with the columns name, column, row, width and height, of which name may be
/// missing. Throws Fault that names the line, what is wrong, and what would be right.
std::vector<NamedRegion> read_regions(const std::filesystem::path& file);

/// Throws UsageError when two have one name.
void check_names(const std::vector<NamedRegion>& regions);

}  // namespace kv::polarization

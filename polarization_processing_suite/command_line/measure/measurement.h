// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>

#include "command_line/frames/every_page.h"
#include "kv/polarization/region.h"

namespace kv::polarization {

struct NamedRegion {
  std::string name;
  Rectangle rectangle;
};

/// Of one region of one frame. Counts are the raw frame's, above black.
struct Measurement {
  std::filesystem::path file;
  PagePlace place;
  NamedRegion region;
  RegionStatistics statistics;
};

}  // namespace kv::polarization

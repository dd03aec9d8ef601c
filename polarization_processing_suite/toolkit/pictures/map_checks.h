// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "kv/pictures/picture_maps.h"
#include "kv/polarization/fault.h"

namespace kv::polarization {

/// Throws Fault unless the map has that many elements a pixel.
template <class Element>
void check_map(const PictureMaps& maps, std::span<const Element> map, const char* name,
               std::size_t elements_a_pixel = 1) {
  const std::size_t expected = pixel_count(maps.width, maps.height) * elements_a_pixel;
  if (map.size() == expected && expected > 0) return;
  throw Fault(FaultKind::argument,
              std::string("the map ") + name + " of the picture has " + std::to_string(map.size()) +
                  " elements; a picture of " + std::to_string(maps.width) + " x " +
                  std::to_string(maps.height) + " pixels needs " + std::to_string(expected));
}

/// Throws Fault unless the end of a range is above 0 and at most 1.
inline void check_range_end(double end, const char* name) {
  if (end > 0 && end <= 1) return;
  throw Fault(FaultKind::argument, std::string("the range of ") + name + " ends at " +
                                       std::to_string(end) + "; give a number above 0, up to 1");
}

}  // namespace kv::polarization

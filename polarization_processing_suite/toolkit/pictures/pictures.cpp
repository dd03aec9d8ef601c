// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/pictures/pictures.h"

#include <algorithm>
#include <array>

#include "toolkit/pictures/colour_lanes.h"
#include "toolkit/pictures/colour_spaces.h"
#include "toolkit/pictures/map_checks.h"

namespace kv::polarization {
namespace {

using ByteTable = std::array<std::uint8_t, 65536>;

/// A byte for every level of a map.
template <class Value>
ByteTable byte_table(Value value_of) {
  ByteTable table;
  for (std::size_t level = 0; level < table.size(); ++level) {
    table[level] = to_byte(value_of(static_cast<double>(level)));
  }
  return table;
}

ByteTable dolp_table(double dolp_white) {
  check_range_end(dolp_white, "DoLP");
  return byte_table([=](double level) { return level / (65535.0 * dolp_white); });
}

Picture grey_picture(const PictureMaps& maps, std::span<const std::uint16_t> levels,
                     const ByteTable& table) {
  Picture picture(maps.width, maps.height, 1);
  std::transform(levels.begin(), levels.end(), picture.bytes.begin(),
                 [&table](std::uint16_t level) { return table[level]; });
  return picture;
}

/// 4096 angles, a step of 0.04 degrees, are finer than the colours of any circle, and stay in the
/// processor's nearest cache.
constexpr int kAngleShift = 4;
using AngleTable = std::array<ColourLanes, (65536 >> kAngleShift)>;

AngleTable angle_table(HueCircle hues) {
  AngleTable table;
  for (std::size_t i = 0; i < table.size(); ++i) {
    const double level = static_cast<double>(i << kAngleShift) + 7.5;
    table[i] = lanes_of(angle_colour(hues, level * 180.0 / 65535.0 - 90.0));
  }
  return table;
}

template <Unpolarized neutral>
void mix_pixels(const PictureMaps& maps, const AngleTable& angles, const ByteTable& weights,
                std::uint8_t* out) {
  for (std::size_t i = 0; i < maps.dolp.size(); ++i, out += 3) {
    const ColourLanes pure = angles[maps.azimuth[i] >> kAngleShift];
    store(mixed_lanes<neutral>(pure, weights[maps.dolp[i]]), out);
  }
}

/// The diverging scale in steps, as many to each side of 0.
constexpr int kRatioSteps = 511;
using RatioTable = std::array<Colour, 2 * kRatioSteps + 1>;

RatioTable ratio_table() {
  RatioTable table;
  double step = -kRatioSteps;
  for (Colour& colour : table) colour = diverging_colour(step++ / kRatioSteps);
  return table;
}

}  // namespace

std::uint16_t brightness_white_of(const PictureMaps& maps) {
  check_map(maps, maps.brightness, "brightness");
  std::vector<std::size_t> histogram(65536);
  for (const std::uint16_t level : maps.brightness) ++histogram[level];
  const std::size_t allowed = maps.brightness.size() / 500;
  std::size_t white = 65535;
  for (std::size_t above = 0; white > 1; --white) {
    above += histogram[white];
    if (above > allowed) break;
  }
  return static_cast<std::uint16_t>(white);
}

Picture intensity_picture(const PictureMaps& maps) {
  const double white = brightness_white_of(maps);
  const ByteTable table =
      byte_table([white](double level) { return srgb_encoded(std::min(level / white, 1.0)); });
  return grey_picture(maps, maps.brightness, table);
}

Picture dolp_picture(const PictureMaps& maps, double dolp_white) {
  check_map(maps, maps.dolp, "dolp");
  return grey_picture(maps, maps.dolp, dolp_table(dolp_white));
}

Picture angle_picture(const PictureMaps& maps, double dolp_white, AngleStyle style) {
  check_map(maps, maps.azimuth, "azimuth");
  check_map(maps, maps.dolp, "dolp");
  const AngleTable angles = angle_table(style.hues);
  const ByteTable weights = dolp_table(dolp_white);
  Picture picture(maps.width, maps.height, 3);
  if (style.unpolarized == Unpolarized::white) {
    mix_pixels<Unpolarized::white>(maps, angles, weights, picture.bytes.data());
  } else {
    mix_pixels<Unpolarized::black>(maps, angles, weights, picture.bytes.data());
  }
  return picture;
}

Picture ratio_picture(const PictureMaps& maps, StokesRatio ratio, double limit) {
  check_map(maps, maps.normalized_stokes, "normalized_stokes", 2);
  check_range_end(limit, "a Stokes ratio");
  const RatioTable table = ratio_table();
  const float scale = static_cast<float>(kRatioSteps / limit);
  Picture picture(maps.width, maps.height, 3);
  std::uint8_t* out = picture.bytes.data();
  for (std::size_t i = static_cast<std::size_t>(ratio); i < maps.normalized_stokes.size(); i += 2) {
    const float steps = maps.normalized_stokes[i] * scale;
    // Half a step more than the offset of 0 makes truncation round.
    const float bounded =
        std::clamp(steps == steps ? steps : 0.0f, -1.0f * kRatioSteps, 1.0f * kRatioSteps) +
        (kRatioSteps + 0.5f);
    const Colour& colour = table[static_cast<std::size_t>(static_cast<int>(bounded))];
    out = std::copy(colour.begin(), colour.end(), out);
  }
  return picture;
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/view/quality_flags.h"

#include <algorithm>
#include <array>

#include "kv/polarization/maps.h"

namespace kv::polarization {
namespace {

// The first one that a pixel has is its colour. A rescued pixel is clipped, too.
constexpr std::array<FlagStyle, 6> kStyles = {{
    {quality::bad_pixel, "bad pixel", {255, 60, 220}},
    {quality::rescued, "rebuilt", {255, 150, 30}},
    {quality::clipped, "clipped", {230, 40, 40}},
    {quality::dolp_above_1, "DoLP above 1", {255, 235, 60}},
    {quality::dark, "no light", {70, 110, 255}},
    {quality::below_noise, "DoLP below noise", {0, 130, 130}},
}};

struct Block {
  int left, top, right, bottom;
};

template <class Work>
void for_each_flag(std::span<std::uint8_t> flags, int width, const Block& block, Work work) {
  for (int row = block.top; row < block.bottom; ++row) {
    std::uint8_t* line = &flags[pixel_count(width, row)];
    std::for_each(line + block.left, line + block.right, work);
  }
}

}  // namespace

std::vector<FlagStyle> flag_styles(const KnownFrame& known) {
  std::vector<FlagStyle> styles;
  for (const FlagStyle& style : kStyles) {
    const bool wants_correction = style.bit == quality::bad_pixel || style.bit == quality::rescued;
    if (wants_correction && known.flags.empty()) continue;
    if (style.bit == quality::below_noise && !known.samples.noise) continue;
    styles.push_back(style);
  }
  return styles;
}

Buffer<std::uint8_t> quality_of(const KnownFrame& known) {
  Buffer<std::uint8_t> flags(pixel_count(known.frame.width, known.frame.height));
  MapViews views;
  views.quality = {flags.data(), flags.size()};
  MapMaker(0).fill(known.frame, known.mosaic, {.samples = known.samples}, views);
  known.finish(views);
  return flags;
}

void spread_flags(std::span<std::uint8_t> flags, int width, int height, int block) {
  for (int top = 0; top < height; top += block) {
    for (int left = 0; left < width; left += block) {
      const Block area = {left, top, std::min(left + block, width), std::min(top + block, height)};
      std::uint8_t joined = 0;
      int noisy = 0;
      for_each_flag(flags, width, area, [&](std::uint8_t pixel) {
        joined |= pixel;
        noisy += (pixel & quality::below_noise) != 0 ? 1 : 0;
      });
      const int pixels = (area.right - area.left) * (area.bottom - area.top);
      if (2 * noisy < pixels) joined &= static_cast<std::uint8_t>(~quality::below_noise);
      for_each_flag(flags, width, area, [joined](std::uint8_t& pixel) { pixel = joined; });
    }
  }
}

}  // namespace kv::polarization

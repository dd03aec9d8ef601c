// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/pictures/flags_picture.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "toolkit/pictures/map_checks.h"

namespace kv::polarization {
namespace {

std::string share_text(std::size_t count, std::size_t pixels) {
  const double per_cent =
      pixels == 0 ? 0.0 : 100.0 * static_cast<double>(count) / static_cast<double>(pixels);
  if (count > 0 && per_cent < 0.01) return "<0.01%";
  char text[16];
  std::snprintf(text, sizeof text, "%.2f%%", per_cent);
  return text;
}

/// The style of every combination of flags; null for none.
std::array<const FlagStyle*, 256> style_table(std::span<const FlagStyle> table) {
  std::array<const FlagStyle*, 256> styles{};
  for (std::size_t flags = 0; flags < styles.size(); ++flags) {
    const auto style =
        std::find_if(table.begin(), table.end(),
                     [flags](const FlagStyle& candidate) { return (flags & candidate.bit) != 0; });
    if (style != table.end()) styles[flags] = &*style;
  }
  return styles;
}

}  // namespace

Picture flags_picture(const PictureMaps& maps, std::span<const std::uint8_t> flags,
                      std::span<const FlagStyle> table) {
  check_map(maps, flags, "flags");
  const Picture grey = intensity_picture(maps);
  const auto styles = style_table(table);
  Picture picture(maps.width, maps.height, 3);
  std::uint8_t* out = picture.bytes.data();
  for (std::size_t i = 0; i < flags.size(); ++i, out += 3) {
    if (const FlagStyle* style = styles[flags[i]]) {
      std::copy(style->colour.begin(), style->colour.end(), out);
    } else {
      out[0] = out[1] = out[2] = grey.bytes[i] / 2;
    }
  }
  return picture;
}

Legend flags_legend(std::span<const std::uint8_t> flags, std::span<const FlagStyle> table) {
  std::array<std::size_t, 256> histogram{};
  for (const std::uint8_t value : flags) ++histogram[value];
  Swatches swatches;
  for (const FlagStyle& style : table) {
    std::size_t count = 0;
    for (std::size_t value = 0; value < histogram.size(); ++value) {
      if ((value & style.bit) != 0) count += histogram[value];
    }
    swatches.push_back(
        {style.colour, std::string(style.name) + " " + share_text(count, flags.size())});
  }
  return {.title = "Quality flags",
          .scale = std::move(swatches),
          .notes = {"shares of all pixels", "over intensity at half brightness"}};
}

}  // namespace kv::polarization

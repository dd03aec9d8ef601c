// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/view/frame_sheet.h"

#include <algorithm>
#include <cmath>

#include "command_line/view/quality_flags.h"
#include "kv/pictures/angle_ticks.h"
#include "kv/pictures/picture_kinds.h"
#include "kv/polarization/processor.h"
#include "toolkit/api/packed_frame.h"

namespace kv::polarization {
namespace {

/// Of a sheet's pixels, so that ticks are clear.
constexpr int kLeastTickCell = 16;

/// As pictures want it: without a black level, full scale as white as the raw frame's, and clipped
/// samples, which a correction puts far above it, at full scale.
Frame shown_frame(const KnownFrame& known, int raw_bit_depth) {
  Frame shown;
  const int bit_depth = raw_bit_depth + known.gained_bits;
  shown.reshape(static_cast<std::uint64_t>(known.frame.width),
                static_cast<std::uint64_t>(known.frame.height), bit_depth);
  const int black = static_cast<int>(std::lround(known.samples.black_level));
  const int limit = full_scale(bit_depth);
  Buffer<std::uint16_t> room;
  const std::uint16_t* const samples = packed(known.frame, known.mosaic, room).samples;
  std::transform(samples, samples + shown.samples.size(), shown.samples.begin(),
                 [black, limit](int sample) {
                   return static_cast<std::uint16_t>(std::clamp(sample - black, 0, limit));
                 });
  return shown;
}

}  // namespace

FrameSheet sheet_of(const KnownFrame& known, int raw_bit_depth, const SheetSettings& settings) {
  const Frame shown = shown_frame(known, raw_bit_depth);
  Processor processor(0);
  PictureSource source;
  source.fill(processor, shown, known.mosaic);
  const PictureMaps maps = source.maps();
  PictureRanges ranges = ranges_of(maps);
  if (settings.dolp_white) ranges.dolp_white = *settings.dolp_white;
  const double white = ranges.dolp_white;
  const double limit = ranges.ratio_limit;

  SheetLayout layout = layout_within(settings.width, shown.width, shown.height);
  layout.title = settings.title;
  ContactSheet sheet(layout);
  const auto add_angle = [&](AngleStyle style) {
    sheet.add(angle_picture(maps, white, style), angle_legend(white, style));
  };
  const auto add_ratio = [&](StokesRatio ratio) {
    sheet.add(ratio_picture(maps, ratio, limit), ratio_legend(ratio, limit));
  };
  const int cell_size = std::max(tick_cell_size(maps), kLeastTickCell * layout.reduction);
  sheet.add(intensity_picture(maps), intensity_legend(maps));
  sheet.add(dolp_picture(maps, white), dolp_legend(white));
  sheet.add(angle_ticks_picture(maps, white, cell_size), angle_ticks_legend(white, cell_size));
  add_angle({HueCircle::hsv, Unpolarized::black});
  add_angle({HueCircle::hsv, Unpolarized::white});
  add_ratio(StokesRatio::s1);
  add_angle({HueCircle::even, Unpolarized::black});
  add_angle({HueCircle::even, Unpolarized::white});
  add_ratio(StokesRatio::s2);

  Buffer<std::uint8_t> flags = quality_of(known);
  const std::vector<FlagStyle> styles = flag_styles(known);
  const Legend legend = flags_legend(flags, styles);
  spread_flags({flags.data(), flags.size()}, shown.width, shown.height, layout.reduction);
  sheet.add(flags_picture(maps, flags, styles), legend);
  return {layout, sheet.picture()};
}

}  // namespace kv::polarization

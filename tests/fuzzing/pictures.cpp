// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Pictures of every kind, of maps of any values and sizes.
#include "kv/pictures.h"

#include <optional>
#include <vector>

#include "fuzzing/fuzzing.h"

namespace kv::fuzzing {
namespace {

using namespace polarization;

constexpr int kGreatestSide = 90;

template <class Element>
std::vector<Element> elements(Choices& choices, std::size_t count) {
  // A few values, over and over, so that a short input fills a large map.
  std::array<Element, 9> values{};
  for (Element& value : values) value = choices.number<Element>();
  std::vector<Element> all(count);
  for (std::size_t i = 0; i < count; ++i) all[i] = values[i % values.size()];
  return all;
}

struct Maps {
  std::vector<std::uint16_t> brightness;
  std::vector<std::uint16_t> azimuth;
  std::vector<std::uint16_t> dolp;
  std::vector<float> ratios;
  std::vector<std::uint8_t> flags;
};

/// Maps of the right size, or now and then of another one.
Maps choose_maps(Choices& choices, std::size_t pixels) {
  const auto count = [&](std::size_t right) {
    return choices.once_in(16) ? choices.below(4) : right;
  };
  return {elements<std::uint16_t>(choices, count(pixels)),
          elements<std::uint16_t>(choices, count(pixels)),
          elements<std::uint16_t>(choices, count(pixels)),
          elements<float>(choices, count(2 * pixels)),
          elements<std::uint8_t>(choices, count(pixels))};
}

PictureMaps views_of(const Maps& maps, int width, int height) {
  return {.width = width,
          .height = height,
          .brightness = maps.brightness,
          .azimuth = maps.azimuth,
          .dolp = maps.dolp,
          .normalized_stokes = maps.ratios};
}

/// Ranges that were found, or any numbers.
PictureRanges choose_ranges(Choices& choices, const PictureMaps& maps) {
  PictureRanges ranges;
  if (choices.once_in(2)) {
    succeeds([&] { ranges = ranges_of(maps); });
    require(ranges.dolp_white > 0 && ranges.dolp_white <= 1 && ranges.ratio_limit > 0 &&
                ranges.ratio_limit <= 1,
            "ranges that were found are ranges");
    return ranges;
  }
  return {choices.number<float>(), choices.number<float>()};
}

/// Makes a picture, which has the size of its frame, or more.
template <class Make>
void try_picture(int least_width, int least_height, Make make) {
  std::optional<Picture> picture;
  if (!succeeds([&] { picture.emplace(make()); })) return;
  require(picture->width >= least_width && picture->height >= least_height,
          "a picture has the size of its frame");
  require(picture->bytes.size() == picture->row_size() * static_cast<std::size_t>(picture->height),
          "a picture has all its samples");
}

void make_flags(Choices& choices, const PictureMaps& maps, const Maps& all) {
  const std::array table = {FlagStyle{choices.byte(), "first", {255, 0, 0}},
                            FlagStyle{choices.byte(), "second", {0, 0, 255}}};
  try_picture(maps.width, maps.height, [&] {
    return with_legend(flags_picture(maps, all.flags, table), flags_legend(all.flags, table));
  });
}

void make_ticks(Choices& choices, const PictureMaps& maps, const PictureRanges& ranges) {
  const int cell = choices.once_in(2) ? choices.number<int>() : 1 + choices.byte() % 30;
  try_picture(maps.width, maps.height, [&] {
    return with_legend(angle_ticks_picture(maps, ranges.dolp_white, cell),
                       angle_ticks_legend(ranges.dolp_white, cell));
  });
}

void make_sheet(Choices& choices, const PictureMaps& maps, double dolp_white) {
  SheetLayout layout;
  succeeds([&] {
    layout = layout_within(1 + static_cast<int>(choices.below(700)), maps.width, maps.height);
  });
  const auto text = choices.take(20);
  layout.title.assign(text.begin(), text.end());
  try_picture(1, 1, [&] {
    ContactSheet sheet(layout);
    sheet.add(intensity_picture(maps), intensity_legend(maps));
    sheet.add(dolp_picture(maps, dolp_white), dolp_legend(dolp_white));
    return sheet.picture();
  });
}

/// Of a frame of any samples, by the library.
void make_source(Choices& choices) {
  static Processor processor(1);
  const auto side = [&] { return static_cast<int>(choices.below(40)); };
  const int width = side();
  const int height = side();
  const auto samples = elements<std::uint16_t>(choices, pixel_count(width, height));
  PictureSource source;
  const Mosaic mosaic{choices.number<std::int32_t>() % 6, choices.number<std::int8_t>(),
                      choices.number<std::int8_t>()};
  const FrameView frame =
      frame_view(samples, width, height, static_cast<int>(choices.below(20)) - 1);
  if (succeeds([&] { source.fill(processor, frame, mosaic); })) {
    try_picture(1, 1, [&] {
      return picture_of(PictureKind::contact_sheet, source.maps(), ranges_of(source.maps()));
    });
  }
}

}  // namespace

void set_up() {}

void fuzz(Choices choices) {
  const auto side = [&] { return static_cast<int>(choices.below(kGreatestSide)); };
  const std::size_t kind = choices.below(kPictureKinds.size() + 4);
  if (kind == kPictureKinds.size() + 3) return make_source(choices);
  const int width = side();
  const int height = side();
  const Maps all = choose_maps(choices, pixel_count(width, height));
  const PictureMaps maps = views_of(all, width, height);
  const PictureRanges ranges = choose_ranges(choices, maps);
  if (kind == kPictureKinds.size()) return make_flags(choices, maps, all);
  if (kind == kPictureKinds.size() + 1) return make_ticks(choices, maps, ranges);
  if (kind == kPictureKinds.size() + 2) return make_sheet(choices, maps, ranges.dolp_white);
  const PictureKind chosen = kPictureKinds[kind].kind;
  const bool sheet = chosen == PictureKind::contact_sheet;
  try_picture(sheet ? 1 : width, sheet ? 1 : height,
              [&] { return picture_of(chosen, maps, ranges); });
}

}  // namespace kv::fuzzing

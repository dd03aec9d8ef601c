// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/pictures/picture_kinds.h"

#include "kv/pictures/angle_ticks.h"
#include "kv/pictures/contact_sheet.h"

namespace kv::polarization {
namespace {

constexpr bool is_listed_in_order() {
  for (std::size_t i = 0; i < kPictureKinds.size(); ++i) {
    if (static_cast<std::size_t>(kPictureKinds[i].kind) != i) return false;
  }
  return true;
}
static_assert(is_listed_in_order(), "a kind is the number of its line in the list");

struct Plate {
  Picture body;
  Legend legend;
};

/// Of any kind but the contact sheet.
Plate plate_of(PictureKind kind, const PictureMaps& maps, const PictureRanges& ranges) {
  const double white = ranges.dolp_white;
  switch (kind) {
    case PictureKind::intensity:
      return {intensity_picture(maps), intensity_legend(maps)};
    case PictureKind::dolp:
      return {dolp_picture(maps, white), dolp_legend(white)};
    case PictureKind::s1_ratio:
    case PictureKind::s2_ratio: {
      const StokesRatio ratio = kind == PictureKind::s1_ratio ? StokesRatio::s1 : StokesRatio::s2;
      return {ratio_picture(maps, ratio, ranges.ratio_limit),
              ratio_legend(ratio, ranges.ratio_limit)};
    }
    case PictureKind::angle_ticks: {
      const int cell_size = tick_cell_size(maps);
      return {angle_ticks_picture(maps, white, cell_size), angle_ticks_legend(white, cell_size)};
    }
    default: {
      const AngleStyle style = angle_style_of(kind).value();
      return {angle_picture(maps, white, style), angle_legend(white, style)};
    }
  }
}

Picture contact_sheet(const PictureMaps& maps, const PictureRanges& ranges) {
  ContactSheet sheet;
  for (const PictureTraits& traits : kPictureKinds) {
    if (traits.kind == PictureKind::contact_sheet) continue;
    const Plate plate = plate_of(traits.kind, maps, ranges);
    sheet.add(plate.body, plate.legend);
  }
  return sheet.picture();
}

}  // namespace

OutputSet planes_for(std::span<const PictureKind> kinds) {
  OutputSet planes;
  for (const PictureKind kind : kinds) {
    planes = OutputSet::from_number(planes.bits | unsigned{traits_of(kind).needs.bits});
  }
  return planes;
}

Picture picture_of(PictureKind kind, const PictureMaps& maps, const PictureRanges& ranges) {
  if (kind == PictureKind::contact_sheet) return contact_sheet(maps, ranges);
  Plate plate = plate_of(kind, maps, ranges);
  return with_legend(std::move(plate.body), plate.legend);
}

}  // namespace kv::polarization

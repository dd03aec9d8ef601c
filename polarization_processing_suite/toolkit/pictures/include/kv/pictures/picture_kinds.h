// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <optional>
#include <span>
#include <string_view>

#include "kv/pictures/legend.h"
#include "kv/pictures/ranges.h"

namespace kv::polarization {

/// What a picture shows. The light ones are for print, the even ones have hues of one lightness.
enum class PictureKind : std::uint8_t {
  intensity,         ///< intensity_picture()
  dolp,              ///< dolp_picture()
  angle,             ///< angle_picture() of vivid hues on black
  angle_light,       ///< of vivid hues on white
  angle_even,        ///< of even hues on black
  angle_even_light,  ///< of even hues on white
  s1_ratio,          ///< ratio_picture() of S1/S0
  s2_ratio,          ///< of S2/S0
  angle_ticks,       ///< angle_ticks_picture()
  contact_sheet      ///< all others side by side, with titles
};

/// A line of the list of pictures.
struct PictureTraits {
  PictureKind kind;       ///< whose line it is
  std::string_view name;  ///< for files and options
  OutputSet needs;        ///< of kPicturePlanes, beside brightness; also for the picture's range
};

/// The one list of pictures, in the order of PictureKind.
inline constexpr std::array<PictureTraits, 10> kPictureKinds{{
    {PictureKind::intensity, "intensity", OutputSet{}},
    {PictureKind::dolp, "dolp", OutputSet{Plane::dolp}},
    {PictureKind::angle, "angle", OutputSet{Plane::azimuth, Plane::dolp}},
    {PictureKind::angle_light, "angle_light", OutputSet{Plane::azimuth, Plane::dolp}},
    {PictureKind::angle_even, "angle_even", OutputSet{Plane::azimuth, Plane::dolp}},
    {PictureKind::angle_even_light, "angle_even_light", OutputSet{Plane::azimuth, Plane::dolp}},
    {PictureKind::s1_ratio, "s1_ratio", OutputSet{Plane::normalized_stokes}},
    {PictureKind::s2_ratio, "s2_ratio", OutputSet{Plane::normalized_stokes}},
    {PictureKind::angle_ticks, "angle_ticks", OutputSet{Plane::normalized_stokes, Plane::dolp}},
    {PictureKind::contact_sheet, "contact_sheet", kPicturePlanes},
}};

/// The line of a kind.
constexpr const PictureTraits& traits_of(PictureKind kind) {
  return kPictureKinds[static_cast<std::size_t>(kind)];
}

/// The kind of that name, in this spelling.
constexpr std::optional<PictureKind> picture_kind_named(std::string_view name) {
  for (const PictureTraits& traits : kPictureKinds) {
    if (traits.name == name) return traits.kind;
  }
  return std::nullopt;
}

/// The style of a kind that shows angles as hues, none for the others.
constexpr std::optional<AngleStyle> angle_style_of(PictureKind kind) {
  switch (kind) {
    case PictureKind::angle:
      return AngleStyle{HueCircle::hsv, Unpolarized::black};
    case PictureKind::angle_light:
      return AngleStyle{HueCircle::hsv, Unpolarized::white};
    case PictureKind::angle_even:
      return AngleStyle{HueCircle::even, Unpolarized::black};
    case PictureKind::angle_even_light:
      return AngleStyle{HueCircle::even, Unpolarized::white};
    default:
      return std::nullopt;
  }
}

/// All that these kinds need, for PictureSource::fill.
OutputSet planes_for(std::span<const PictureKind> kinds);

/// The picture of that kind with its legend. Throws Fault of kind argument for missing maps and for
/// ranges that do not end above 0 and up to 1.
Picture picture_of(PictureKind kind, const PictureMaps& maps, const PictureRanges& ranges);

}  // namespace kv::polarization

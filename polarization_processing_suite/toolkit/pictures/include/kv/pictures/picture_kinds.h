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

enum class PictureKind : std::uint8_t {
  intensity,
  dolp,
  angle,
  angle_light,
  angle_even,
  angle_even_light,
  s1_ratio,
  s2_ratio,
  angle_ticks,
  contact_sheet  ///< all others side by side, with titles
};

struct PictureTraits {
  PictureKind kind;
  std::string_view name;  ///< for files and options
  OutputSet needs;        ///< of kPicturePlanes, beside brightness; also for the picture's range
};

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

constexpr const PictureTraits& traits_of(PictureKind kind) {
  return kPictureKinds[static_cast<std::size_t>(kind)];
}

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

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "kv/polarization/buffer.h"
#include "kv/polarization/frame.h"
#include "planes/plane_list.h"

namespace kv::polarization {

/// Of planes/plane_list.h.
using kv::kPlanes;
using kv::OutputSet;
using kv::Plane;
using kv::plane_named;
using kv::PlaneElement;
using kv::PlaneTraits;

/// A plane of 16-bit levels to fill, one a pixel, row by row without gaps; empty for a plane that
/// is not wanted.
struct LevelView {
  std::span<std::uint16_t> levels;   ///< width * height of them, or more
  std::uint16_t output_max = 65535;  ///< full scale of the plane, 1 to 65535
};

/// The planes to fill from a frame, in somebody else's memory. They may share no byte with each
/// other or with the frame. Planes of different output_max take a call of the library for each.
struct PlaneViews {
  std::span<float> normalized_stokes{};  ///< S1/S0 and S2/S0 of each pixel, row by row

  /// The plane of that name.
  LevelView intensity{};
  LevelView stokes_s1{};
  LevelView stokes_s2{};
  LevelView azimuth{};
  LevelView dolp{};

  /// Any plane but normalized_stokes.
  const LevelView& level(Plane plane) const;
  LevelView& level(Plane plane);
};

/// Owned planes of one frame, whose memory is used again for the next one.
class Planes {
 public:
  /// As reshape() was asked for.
  int width() const { return width_; }
  int height() const { return height_; }
  OutputSet wanted() const { return wanted_; }

  /// Full scale of the 16-bit planes.
  std::uint16_t output_max() const { return output_max_; }

  /// Makes room for those planes of a frame of that size; their values are lost.
  void reshape(int width, int height, OutputSet wanted, std::uint16_t output_max = 65535);

  /// Empty for planes that are not wanted.
  std::span<const float> normalized_stokes() const { return normalized_stokes_; }
  std::span<const std::uint16_t> levels(Plane plane) const { return levels_[index_of(plane)]; }

  /// For Processor::transform(). They last until the next reshape().
  PlaneViews views();

 private:
  int width_ = 0;
  int height_ = 0;
  OutputSet wanted_;
  std::uint16_t output_max_ = 65535;
  Buffer<float> normalized_stokes_;
  std::array<Buffer<std::uint16_t>, kPlanes.size()> levels_;
};

}  // namespace kv::polarization

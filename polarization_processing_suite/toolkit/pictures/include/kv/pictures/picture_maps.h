// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <span>

#include "kv/polarization/buffer.h"
#include "kv/polarization/frame.h"
#include "kv/polarization/mosaic.h"
#include "kv/polarization/planes.h"
#include "kv/polarization/processor.h"

namespace kv::polarization {

/// What pictures are made of: maps of one frame at full resolution, row by row without gaps, in
/// somebody else's memory. They are at full scale whatever output_max the planes of a measurement
/// have, so that a picture is as smooth as its frame.
///
/// A map that a picture does not need may be empty. Every picture function throws Fault of kind
/// argument when a map it needs has another size than width * height.
struct PictureMaps {
  int width = 0;                                ///< pixels
  int height = 0;                               ///< pixels
  std::span<const std::uint16_t> brightness{};  ///< 0 to 65535 as 0 to full scale of the samples
  std::span<const std::uint16_t> azimuth{};     ///< 0 to 65535 as -90 to +90 degrees
  std::span<const std::uint16_t> dolp{};        ///< 0 to 65535 as 0 to 1
  /// S1/S0 and S2/S0 of each pixel; a pair with a NaN counts as unpolarized.
  std::span<const float> normalized_stokes{};
};

/// The planes among the maps.
inline constexpr OutputSet kPicturePlanes{Plane::normalized_stokes, Plane::azimuth, Plane::dolp};

/// Owns the maps of one frame; its memory, up to 14 bytes a pixel, is used again for the next one.
class PictureSource {
 public:
  /// Computes the brightness and those of kPicturePlanes that are wanted. It is a transform of its
  /// own, beside the one for planes to measure with: a few milliseconds for 5 megapixels.
  ///
  /// Brightness is the mean of each pixel and its three neighbours, in which the mosaic does not
  /// show and which, unlike the intensity plane, is never above full scale.
  ///
  /// Throws as Processor::transform does.
  void fill(Processor& processor, const FrameView& frame, const Mosaic& mosaic,
            OutputSet wanted = kPicturePlanes, WeightReach reach = WeightReach::as_library);

  /// Views that last until the next fill.
  PictureMaps maps() const;

 private:
  Planes planes_;
  Buffer<std::uint16_t> brightness_;
  Buffer<std::uint16_t> packed_;
};

}  // namespace kv::polarization

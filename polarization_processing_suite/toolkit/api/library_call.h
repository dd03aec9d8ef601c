// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

#include "kv/polarization/mosaic.h"
#include "kv/polarization/planes.h"

namespace kv::polarization {

/// Samples that the library is to take for a frame, row by row without gaps, and the mosaic behind
/// them.
struct FramePart {
  const std::uint16_t* samples;
  int width;
  int height;
  int bit_depth;
  Mosaic mosaic;

  /// `count` of its rows as a frame.
  FramePart rows(int first, int count) const;
};

/// Those rows of planes of that width. Planes that are not wanted stay empty.
PlaneViews rows_of(const PlaneViews& planes, int width, int first, int count);

/// Throws Fault when the library reports a failure.
void require_ok(ProcessorStatus status);

/// Calls the library's transform, once for each full scale of the planes. Their spans begin where
/// the results are to be put, and are empty for planes that are not wanted.
void call_library(PolarizationProcessor* handle, const FramePart& frame, const PlaneViews& planes);

}  // namespace kv::polarization

#pragma once

#include <cstdint>

#include "kv/polarization/mosaic.h"
#include "kv/polarization/planes.h"

namespace kv::polarization {

/// Samples that the library is to take for a frame, row by row without gaps.
struct FramePart {
  const std::uint16_t* samples;
  int width;
  int height;
  int bit_depth;
};

/// Throws Fault when the library reports a failure.
void require_ok(ProcessorStatus status);

/// Calls the library's transform, once for each full scale of the planes. Their spans begin where
/// the results are to be put, and are empty for planes that are not wanted.
void call_library(PolarizationProcessor* handle, const Mosaic& mosaic, const FramePart& part,
                  const PlaneViews& planes);

}  // namespace kv::polarization

#pragma once

#include <array>
#include <cstdint>

#include "kevrinth_qrm_polarization_processor.h"
#include "planes/plane_list.h"
#include "toolkit/transform_settings.h"

namespace kv {

/// Samples that the library is to take for a frame, row by row without gaps.
struct FramePart {
  const std::uint16_t* samples;
  int width;
  int height;
  int bit_depth;
};

/// Where a call puts its results; null for a plane that is not wanted.
struct Targets {
  float* normalized_stokes = nullptr;
  std::array<std::uint16_t*, kPlanes.size()> levels{};  ///< by plane; 16-bit planes alone count

  bool operator==(const Targets&) const = default;
};

/// Throws Error when the library reports a failure.
void require_ok(ProcessorStatus status);

/// Calls the library's transform. The settings' choice of planes has no part in it.
void call_library(PolarizationProcessor* handle, const TransformSettings& settings,
                  const FramePart& part, const Targets& targets);

}  // namespace kv

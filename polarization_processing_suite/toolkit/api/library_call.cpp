// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/api/library_call.h"

#include <string>

#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

/// The full scales that levels are wanted in, each once.
class FullScales {
 public:
  explicit FullScales(const PlaneViews& planes) {
    for (const PlaneTraits& traits : kPlanes) {
      if (traits.element != PlaneElement::level) continue;
      const LevelView& view = planes.level(traits.plane);
      if (!view.levels.empty()) add(view.output_max);
    }
    // Pairs need a call, but no full scale.
    if (count_ == 0) add(65535);
  }
  const std::uint16_t* begin() const { return scales_.data(); }
  const std::uint16_t* end() const { return scales_.data() + count_; }

 private:
  void add(std::uint16_t scale) {
    for (const std::uint16_t known : *this) {
      if (known == scale) return;
    }
    scales_[count_++] = scale;
  }

  std::array<std::uint16_t, kPlanes.size()> scales_{};
  std::size_t count_ = 0;
};

}  // namespace

FramePart FramePart::rows(int first, int count) const {
  FramePart part = *this;
  part.samples += pixel_count(width, first);
  part.height = count;
  // The library asks only whether an origin is odd.
  part.mosaic.y_origin = (mosaic.y_origin % 2 + first) % 2;
  return part;
}

PlaneViews rows_of(const PlaneViews& planes, int width, int first, int count) {
  const std::size_t begin = pixel_count(width, first);
  const std::size_t size = pixel_count(width, count);
  PlaneViews part = planes;
  if (!planes.normalized_stokes.empty()) {
    part.normalized_stokes = planes.normalized_stokes.subspan(2 * begin, 2 * size);
  }
  for (const PlaneTraits& traits : kPlanes) {
    if (traits.element != PlaneElement::level) continue;
    LevelView& view = part.level(traits.plane);
    if (!view.levels.empty()) view.levels = view.levels.subspan(begin, size);
  }
  return part;
}

void require_ok(ProcessorStatus status) {
  switch (status) {
    case kv_status_ok:
      return;
    case kv_status_general_failure:
      throw Fault(FaultKind::unsupported,
                  "the processing library cannot run on this processor; it needs one with SSE",
                  status);
    case kv_status_out_of_memory:
      throw Fault(FaultKind::memory,
                  "the processing library is out of memory; close other programs and try again",
                  status);
    default:
      throw Fault(FaultKind::state,
                  "the processing library refused the call with status " + std::to_string(status) +
                      "; its header kevrinth_qrm_polarization_processor.h explains the number",
                  status);
  }
}

void call_library(PolarizationProcessor* handle, const FramePart& frame, const PlaneViews& planes) {
  // A buffer that is used again has an address even while it is empty.
  float* pairs = planes.normalized_stokes.empty() ? nullptr : planes.normalized_stokes.data();
  for (const std::uint16_t output_max : FullScales(planes)) {
    const auto level = [&](const LevelView& view) {
      return view.output_max == output_max && !view.levels.empty() ? view.levels.data() : nullptr;
    };
    require_ok(kv_polarization_processor_transform(
        handle, frame.mosaic.phase, frame.samples, frame.mosaic.x_origin, frame.mosaic.y_origin,
        frame.width, frame.height, static_cast<std::uint32_t>(frame.bit_depth), output_max, pairs,
        level(planes.intensity), level(planes.stokes_s1), level(planes.stokes_s2),
        level(planes.azimuth), level(planes.dolp)));
    pairs = nullptr;
  }
}

}  // namespace kv::polarization

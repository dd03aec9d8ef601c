#include "toolkit/library_call.h"

#include <string>

#include "toolkit/error.h"

namespace kv {

void require_ok(ProcessorStatus status) {
  switch (status) {
    case kv_status_ok:
      return;
    case kv_status_general_failure:
      throw Error("the processing library cannot run on this processor; it needs one with SSE");
    case kv_status_out_of_memory:
      throw Error("the processing library is out of memory; close other programs and try again");
    default:
      throw Error("the processing library refused the call with status " + std::to_string(status) +
                  "; its header kevrinth_qrm_polarization_processor.h explains the number");
  }
}

void call_library(PolarizationProcessor* handle, const TransformSettings& settings,
                  const FramePart& part, const Targets& targets) {
  const auto level = [&targets](Plane plane) { return targets.levels[index_of(plane)]; };
  require_ok(kv_polarization_processor_transform(
      handle, settings.phase, part.samples, settings.x_origin, settings.y_origin, part.width,
      part.height, static_cast<std::uint32_t>(part.bit_depth), settings.output_max,
      targets.normalized_stokes, level(Plane::intensity), level(Plane::stokes_s1),
      level(Plane::stokes_s2), level(Plane::azimuth), level(Plane::dolp)));
}

}  // namespace kv

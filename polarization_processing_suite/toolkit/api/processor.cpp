#include "kv/polarization/processor.h"

#include <string>

#include "kv/polarization/fault.h"
#include "toolkit/api/library_call.h"
#include "toolkit/api/packed_frame.h"
#include "toolkit/api/placed_pairs.h"
#include "toolkit/api/request_checks.h"

namespace kv::polarization {

/// What a processor keeps: its handle of the library, and memory of the work.
class Processor::Implementation {
 public:
  Implementation() {
    kv_polarization_processor_module_initialize();
    try {
      require_ok(kv_polarization_processor_create_polarization_processor(&handle_));
    } catch (...) {
      kv_polarization_processor_module_terminate();
      throw;
    }
  }
  ~Implementation() {
    kv_polarization_processor_destroy_polarization_processor(handle_);
    kv_polarization_processor_module_terminate();
  }
  Implementation(const Implementation&) = delete;
  Implementation& operator=(const Implementation&) = delete;

  void transform(const FrameView& frame, const Mosaic& mosaic, const PlaneViews& planes) {
    check_request(frame, mosaic, planes);
    const FramePart part = packed(frame, samples_);
    PlaneViews direct = planes;
    const bool moved = packs_pairs(frame.width, frame.height) && !planes.normalized_stokes.empty();
    if (moved) direct.normalized_stokes = {};
    if (!wanted_of(direct).empty()) call_library(handle_, mosaic, part, direct);
    if (moved) fill_placed_pairs(handle_, mosaic, part, planes.normalized_stokes, pairs_);
  }

 private:
  PolarizationProcessor* handle_ = nullptr;
  Buffer<std::uint16_t> samples_;
  PairScratch pairs_;
};

Processor::Processor() : implementation_(std::make_unique<Implementation>()) {}
Processor::~Processor() = default;
Processor::Processor(Processor&&) noexcept = default;
Processor& Processor::operator=(Processor&&) noexcept = default;

void Processor::transform(const FrameView& frame, const Mosaic& mosaic, const PlaneViews& planes) {
  if (!implementation_) {
    throw Fault(FaultKind::state, "the processor was moved from; assign another one to it first");
  }
  implementation_->transform(frame, mosaic, planes);
}

}  // namespace kv::polarization

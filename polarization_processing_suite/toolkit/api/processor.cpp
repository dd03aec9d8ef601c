// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/polarization/processor.h"

#include <algorithm>
#include <atomic>
#include <vector>

#include "kv/polarization/fault.h"
#include "toolkit/api/library_call.h"
#include "toolkit/api/memory_faults.h"
#include "toolkit/api/open_module.h"
#include "toolkit/api/packed_frame.h"
#include "toolkit/api/request_checks.h"
#include "toolkit/api/whole_frame.h"
#include "toolkit/api/worker_pool.h"

namespace kv::polarization {
namespace {

/// Nanoseconds a pixel that a plane takes with the fastest kernels, at the least: what decides on
/// threads must not be too high, as a frame on two threads is never to be slower than on one.
double cost_of(const PlaneViews& planes, WeightReach reach) {
  const auto if_wanted = [](const auto& view, double cost) { return view.empty() ? 0.0 : cost; };
  const double as_library =
      if_wanted(planes.normalized_stokes, 0.8) + if_wanted(planes.intensity.levels, 0.15) +
      if_wanted(planes.stokes_s1.levels, 0.12) + if_wanted(planes.stokes_s2.levels, 0.12) +
      if_wanted(planes.azimuth.levels, 0.35) + if_wanted(planes.dolp.levels, 0.25);
  return reach == WeightReach::as_library ? as_library : 5.0;
}

/// Work of one thread that is worth its strip: waking it, two more questions for the processor's
/// features, and three rows into scratch take some 40 microseconds.
constexpr double kLeastNanosecondsAThread = 75000;

int strips_for(const FrameView& frame, const PlaneViews& planes, WeightReach reach, int threads) {
  if (!can_be_cut(frame.width, frame.height)) return 1;
  const double cost =
      cost_of(planes, reach) * static_cast<double>(pixel_count(frame.width, frame.height));
  const double worth = std::min(cost / kLeastNanosecondsAThread, 1e6);
  return std::clamp(static_cast<int>(worth), 1, std::min(threads, frame.height / kLeastStrip));
}

}  // namespace

/// What a processor keeps: its handle of the library, threads, and memory of the work.
class Processor::Implementation {
 public:
  explicit Implementation(int threads) : pool_(WorkerPool::threads_of(threads)) {
    scratch_.resize(static_cast<std::size_t>(pool_.threads()));
    require_ok(kv_polarization_processor_create_polarization_processor(&handle_));
    defaults_ = weights();
  }
  ~Implementation() { kv_polarization_processor_destroy_polarization_processor(handle_); }
  Implementation(const Implementation&) = delete;
  Implementation& operator=(const Implementation&) = delete;

  Weights weights() const {
    Weights weights;
    require_ok(kv_polarization_processor_get_custom_calibration_coefficients(
        handle_, weights.behind_0.data(), weights.behind_45.data(), weights.behind_90.data(),
        weights.behind_135.data()));
    return weights;
  }

  void set_weights(const Weights& weights) {
    require_ok(kv_polarization_processor_set_custom_calibration_coefficients(
        handle_, weights.behind_0.data(), weights.behind_45.data(), weights.behind_90.data(),
        weights.behind_135.data()));
  }

  void reset_weights() { set_weights(defaults_); }

  void transform(const FrameView& frame, const Mosaic& mosaic, const PlaneViews& planes,
                 WeightReach reach) {
    check_request(frame, mosaic, planes);
    const FramePart part = packed(frame, mosaic, samples_);
    const auto fill = reach == WeightReach::as_library ? fill_as_library : fill_with_weights;
    const int strips = strips_for(frame, planes, reach, pool_.threads());
    const auto boundary = [&](int strip) {
      return strip == strips ? frame.height : frame.height / strips * strip / 2 * 2;
    };
    pool_.run(strips, [&](int strip) {
      fill(handle_, part, boundary(strip), boundary(strip + 1), planes,
           scratch_[static_cast<std::size_t>(strip)]);
    });
  }

 private:
  WorkerPool pool_;
  OpenModule module_;
  PolarizationProcessor* handle_ = nullptr;
  Weights defaults_;
  Buffer<std::uint16_t> samples_;
  std::vector<StripScratch> scratch_;
};

Processor::Processor(int threads)
    : implementation_(
          with_memory_faults([&] { return std::make_unique<Implementation>(threads); })) {}
Processor::~Processor() = default;
Processor::Processor(Processor&&) noexcept = default;
Processor& Processor::operator=(Processor&&) noexcept = default;

Processor::Implementation& Processor::implementation() const {
  if (!implementation_) {
    throw Fault(FaultKind::state, "the processor was moved from; assign another one to it first");
  }
  return *implementation_;
}

Weights Processor::weights() const { return implementation().weights(); }
void Processor::set_weights(const Weights& weights) { implementation().set_weights(weights); }
void Processor::reset_weights() { implementation().reset_weights(); }

void Processor::transform(const FrameView& frame, const Mosaic& mosaic, const PlaneViews& planes,
                          WeightReach reach) {
  with_memory_faults([&] { implementation().transform(frame, mosaic, planes, reach); });
}

void for_each_frame(std::size_t count, const std::function<void(Processor&, std::size_t)>& work,
                    int threads, const std::optional<Weights>& weights) {
  const auto most = static_cast<std::size_t>(WorkerPool::threads_of(threads));
  WorkerPool pool(static_cast<int>(std::min(most, std::max<std::size_t>(count, 1))));
  std::atomic<std::size_t> next = 0;
  pool.run(pool.threads(), [&](int) {
    try {
      Processor processor;
      if (weights) processor.set_weights(*weights);
      for (std::size_t index = next++; index < count; index = next++) work(processor, index);
    } catch (...) {
      next = count;
      throw;
    }
  });
}

}  // namespace kv::polarization

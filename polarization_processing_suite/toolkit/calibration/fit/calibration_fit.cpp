// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/calibration/calibration_fit.h"

#include <utility>

#include "kv/calibration/fit_plan.h"
#include "kv/polarization/fault.h"
#include "toolkit/calibration/fit/fit_checks.h"
#include "toolkit/calibration/fit/part_bytes.h"
#include "toolkit/calibration/fit/solved_stack.h"

namespace kv::polarization {

class CalibrationFit::Implementation {
 public:
  explicit Implementation(const FitSettings& settings)
      : settings_(settings), pool_(WorkerPool::threads_of(settings.threads)), intake_(settings) {
    check(settings);
  }
  Implementation(const std::shared_ptr<const PlannedStack>& plan, int threads)
      : settings_(plan->settings), pool_(WorkerPool::threads_of(threads)), intake_(plan) {}
  /// Of the bytes of a part.
  Implementation(std::span<const std::byte> bytes, int threads)
      : pool_(WorkerPool::threads_of(threads)), intake_(part_of(bytes, pool_)) {
    settings_ = intake_.plan()->settings;
  }

  void add(const FrameView& frame, const StackFrame& what);
  void add_planned(const FrameView& frame, std::size_t number);
  void merge(Implementation& other);
  std::size_t byte_size() const;
  void write(std::span<std::byte> memory);
  Calibration finish(const FrameAgain& again);

 private:
  void require_unfinished() const;
  void require_part() const;

  FitSettings settings_;
  WorkerPool pool_;
  StackIntake intake_;
  bool finished_ = false;
};

void CalibrationFit::Implementation::require_unfinished() const {
  if (finished_) throw Fault(FaultKind::state, "the fit is finished; make another one");
}

/// Whether it can travel.
void CalibrationFit::Implementation::require_part() const {
  require_unfinished();
  if (intake_.plan() != nullptr) return;
  throw Fault(FaultKind::state, "the fit has no plan; only parts of a plan can be written");
}

void CalibrationFit::Implementation::add(const FrameView& frame, const StackFrame& what) {
  require_unfinished();
  intake_.add(frame, what, pool_);
}

void CalibrationFit::Implementation::add_planned(const FrameView& frame, std::size_t number) {
  require_unfinished();
  intake_.add_planned(frame, number, pool_);
}

void CalibrationFit::Implementation::merge(Implementation& other) {
  require_unfinished();
  other.require_unfinished();
  intake_.merge(other.intake_, pool_);
}

std::size_t CalibrationFit::Implementation::byte_size() const {
  require_part();
  return part_size(intake_);
}

void CalibrationFit::Implementation::write(std::span<std::byte> memory) {
  require_part();
  write_part(intake_, memory, pool_);
}

Calibration CalibrationFit::Implementation::finish(const FrameAgain& again) {
  require_unfinished();
  intake_.require_all();
  finished_ = true;
  return solve_stack(settings_, intake_, again, pool_);
}

CalibrationFit::CalibrationFit(std::unique_ptr<Implementation> implementation)
    : implementation_(std::move(implementation)) {}
CalibrationFit::CalibrationFit(const FitSettings& settings)
    : CalibrationFit(std::make_unique<Implementation>(settings)) {}
CalibrationFit::CalibrationFit(const FitPlan& plan, int threads)
    : CalibrationFit(std::make_unique<Implementation>(plan.plan_, threads)) {}
CalibrationFit::~CalibrationFit() = default;
CalibrationFit::CalibrationFit(CalibrationFit&&) noexcept = default;
CalibrationFit& CalibrationFit::operator=(CalibrationFit&&) noexcept = default;

CalibrationFit::Implementation& CalibrationFit::implementation() const {
  if (implementation_) return *implementation_;
  throw Fault(FaultKind::state, "the fit was moved from; make another one");
}

void CalibrationFit::add(const FrameView& frame, const StackFrame& what) {
  implementation().add(frame, what);
}

void CalibrationFit::add_planned(const FrameView& frame, std::size_t number) {
  implementation().add_planned(frame, number);
}

void CalibrationFit::merge(CalibrationFit&& other) {
  implementation().merge(other.implementation());
  other.implementation_.reset();
}

std::size_t CalibrationFit::byte_size() const { return implementation().byte_size(); }

void CalibrationFit::write(std::span<std::byte> memory) const { implementation().write(memory); }

CalibrationFit CalibrationFit::from_bytes(std::span<const std::byte> bytes, int threads) {
  return CalibrationFit(std::make_unique<Implementation>(bytes, threads));
}

Calibration CalibrationFit::finish(const FrameAgain& again) {
  return implementation().finish(again);
}

}  // namespace kv::polarization

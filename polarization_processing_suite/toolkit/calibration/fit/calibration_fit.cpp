#include "kv/calibration/calibration_fit.h"

#include <utility>

#include "kv/polarization/fault.h"
#include "toolkit/calibration/fit/fit_checks.h"
#include "toolkit/calibration/fit/solved_stack.h"

namespace kv::polarization {

class CalibrationFit::Implementation {
 public:
  explicit Implementation(const FitSettings& settings)
      : settings_(settings), pool_(WorkerPool::threads_of(settings.threads)), intake_(settings) {
    check(settings);
  }

  void add(const FrameView& frame, const StackFrame& what);
  Calibration finish(const FrameAgain& again);

 private:
  FitSettings settings_;
  WorkerPool pool_;
  StackIntake intake_;
  bool finished_ = false;
};

void CalibrationFit::Implementation::add(const FrameView& frame, const StackFrame& what) {
  if (finished_) throw Fault(FaultKind::state, "the fit is finished; make another one");
  intake_.add(frame, what, pool_);
}

Calibration CalibrationFit::Implementation::finish(const FrameAgain& again) {
  if (std::exchange(finished_, true)) {
    throw Fault(FaultKind::state, "the fit is finished; make another one");
  }
  return solve_stack(settings_, intake_, again, pool_);
}

CalibrationFit::CalibrationFit(const FitSettings& settings)
    : implementation_(std::make_unique<Implementation>(settings)) {}
CalibrationFit::~CalibrationFit() = default;
CalibrationFit::CalibrationFit(CalibrationFit&&) noexcept = default;
CalibrationFit& CalibrationFit::operator=(CalibrationFit&&) noexcept = default;

void CalibrationFit::add(const FrameView& frame, const StackFrame& what) {
  if (!implementation_) throw Fault(FaultKind::state, "the fit was moved from; make another one");
  implementation_->add(frame, what);
}

Calibration CalibrationFit::finish(const FrameAgain& again) {
  if (!implementation_) throw Fault(FaultKind::state, "the fit was moved from; make another one");
  return implementation_->finish(again);
}

}  // namespace kv::polarization

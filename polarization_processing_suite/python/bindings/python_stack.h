// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <pybind11/pybind11.h>

#include <optional>
#include <string>

#include "kv/calibration/calibration_fit.h"
#include "python/bindings/arguments.h"
#include "python/bindings/python_calibration.h"

namespace kv::polarization::python {

/// What a fit is told, but for the frames: `settings` for the fit itself, the rest for frames and
/// for the record.
struct FitTerms {
  FitSettings settings{};
  SampleLayout layout{};
  std::string camera{};
  std::string date{};
};

FitTerms fit_terms(int phase, const Origin& origin, std::optional<int> bit_depth, bool left_aligned,
                   std::int64_t threads, const std::optional<NoiseNumbers>& noise,
                   double black_level, const GivenClipLevel& clip_level, double source_dolp,
                   bool angles_known, const std::string& camera, const std::string& date);

/// Throws Fault of kind argument for a number of no kind.
StackFrame stack_frame(int kind, double angle, const std::string& name);

/// Gives a fit the frames that Python's objects hand out, which work under the interpreter's lock;
/// the fit's work is done without it.
class FrameTaker {
 public:
  explicit FrameTaker(const SampleLayout& layout) : layout_(layout) {}

  /// The frame of an array (rows, columns), which faults call by that name. Its memory lasts until
  /// the next call.
  FrameView take(const py::object& frame, const std::string& name);

  /// What calls a function of Python for the frame of a number, from without the lock.
  FrameAgain reader(const py::function& read);

 private:
  SampleLayout layout_;
  std::optional<FrameStack> frame_;
};

/// Ends a fit with the frames that `again` gives, and signs its result.
std::shared_ptr<PythonCalibration> finished(CalibrationFit& fit, const FitTerms& terms,
                                            const py::function& again);

}  // namespace kv::polarization::python

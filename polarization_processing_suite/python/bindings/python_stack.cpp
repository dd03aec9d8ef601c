// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "python/bindings/python_stack.h"

#include <memory>
#include <utility>

#include "toolkit/api/memory_checks.h"

namespace kv::polarization::python {

FitTerms fit_terms(int phase, const Origin& origin, std::optional<int> bit_depth, bool left_aligned,
                   std::int64_t threads, const std::optional<NoiseNumbers>& noise,
                   double black_level, const GivenClipLevel& clip_level, double source_dolp,
                   bool angles_known, const std::string& camera, const std::string& date) {
  return {.settings = {.mosaic = mosaic_of(phase, origin),
                       .threads = thread_count(threads),
                       .noise = noise_of(noise),
                       .black_level = black_level,
                       .clip_level = clip_level_of(clip_level),
                       .source_dolp = source_dolp,
                       .angles_known = angles_known},
          .layout = layout_of(bit_depth, left_aligned),
          .camera = camera,
          .date = date};
}

StackFrame stack_frame(int kind, double angle, const std::string& name) {
  if (kind < 0 || kind > 2) refuse("a frame's kind must be 0 polarized, 1 dark or 2 flat");
  return {static_cast<FrameKind>(kind), angle, name};
}

FrameView FrameTaker::take(const py::object& frame, const std::string& name) {
  frame_.emplace(frame, layout_);
  const std::size_t axes = frame_->shape_with({}).size() + 2;
  if (axes != 2) {
    refuse(name + " has " + std::to_string(axes) + " axes; it must have two, (rows, columns)");
  }
  return frame_->first();
}

FrameAgain FrameTaker::reader(const py::function& read) {
  return [this, &read](std::size_t index) {
    const py::gil_scoped_acquire locked;
    return take(read(index), "frame " + std::to_string(index));
  };
}

std::shared_ptr<PythonCalibration> finished(CalibrationFit& fit, const FitTerms& terms,
                                            const py::function& again) {
  FrameTaker frames(terms.layout);
  const FrameAgain read = frames.reader(again);
  Calibration calibration = [&] {
    const py::gil_scoped_release unlocked;
    return fit.finish(read);
  }();
  calibration.camera = terms.camera;
  calibration.date = terms.date;
  calibration.software = "kv_polarization " KV_VERSION;
  return std::make_shared<PythonCalibration>(std::move(calibration));
}

}  // namespace kv::polarization::python

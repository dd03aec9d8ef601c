#include "kv/calibration/calibration_fit.h"

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <memory>
#include <optional>
#include <string>
#include <tuple>

#include "python/bindings/bindings.h"
#include "python/bindings/python_calibration.h"
#include "toolkit/api/memory_checks.h"

namespace kv::polarization::python {
namespace {

using StackItem = std::tuple<int, double, std::string, py::object>;  // kind, angle, name, frame

/// Gives a fit the frames that Python's objects hand out, which work under the interpreter's lock;
/// the fit's work is done without it.
class PythonStack {
 public:
  explicit PythonStack(const SampleLayout& layout) : layout_(layout) {}

  void add(const StackItem& item, CalibrationFit& fit) {
    const auto& [kind, angle, name, frame] = item;
    if (kind < 0 || kind > 2) refuse("a frame's kind must be 0 polarized, 1 dark or 2 flat");
    const FrameView view = take(frame, name);
    const py::gil_scoped_release unlocked;
    fit.add(view, {static_cast<FrameKind>(kind), angle, name});
  }

  Calibration finish(const py::function& again, CalibrationFit& fit) {
    const py::gil_scoped_release unlocked;
    return fit.finish([&](std::size_t index) {
      const py::gil_scoped_acquire locked;
      return take(again(index), "frame " + std::to_string(index));
    });
  }

 private:
  /// The memory lasts until the next call.
  FrameView take(const py::object& frame, const std::string& name) {
    frame_.emplace(frame, layout_);
    const std::size_t axes = frame_->shape_with({}).size() + 2;
    if (axes != 2) {
      refuse(name + " has " + std::to_string(axes) + " axes; it must have two, (rows, columns)");
    }
    return frame_->first();
  }

  SampleLayout layout_;
  std::optional<FrameStack> frame_;
};

std::shared_ptr<PythonCalibration> fit(
    const py::iterable& stack, const py::function& again, int phase, const Origin& origin,
    std::optional<int> bit_depth, bool left_aligned, std::int64_t threads,
    const std::optional<NoiseNumbers>& noise, double black_level, const GivenClipLevel& clip_level,
    double source_dolp, bool angles_known, const std::string& camera, const std::string& date) {
  CalibrationFit fit({.mosaic = mosaic_of(phase, origin),
                      .threads = thread_count(threads),
                      .noise = noise_of(noise),
                      .black_level = black_level,
                      .clip_level = clip_level_of(clip_level),
                      .source_dolp = source_dolp,
                      .angles_known = angles_known});
  PythonStack frames(layout_of(bit_depth, left_aligned));
  for (const py::handle item : stack) frames.add(py::cast<StackItem>(item), fit);
  Calibration calibration = frames.finish(again, fit);
  calibration.camera = camera;
  calibration.date = date;
  calibration.software = "kv_polarization " KV_VERSION;
  return std::make_shared<PythonCalibration>(std::move(calibration));
}

}  // namespace

void bind_calibration_fit(py::module_& module) {
  module.def("fit", &fit, py::arg("stack"), py::arg("again"), py::kw_only(), py::arg("phase"),
             py::arg("origin"), py::arg("bit_depth"), py::arg("left_aligned"), py::arg("threads"),
             py::arg("noise"), py::arg("black_level"), py::arg("clip_level"),
             py::arg("source_dolp"), py::arg("angles_known"), py::arg("camera"), py::arg("date"));
}

}  // namespace kv::polarization::python

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/calibration/calibration_fit.h"

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <span>
#include <string>
#include <tuple>
#include <vector>

#include "kv/calibration/fit_plan.h"
#include "python/bindings/bindings.h"
#include "python/bindings/python_stack.h"

namespace kv::polarization::python {
namespace {

using StackItem = std::tuple<int, double, std::string, py::object>;  // kind, angle, name, frame
using PlanItem = std::tuple<int, double, std::string>;

std::shared_ptr<PythonCalibration> fit(const py::iterable& stack, const py::function& again,
                                       const FitTerms& terms) {
  CalibrationFit fit(terms.settings);
  FrameTaker frames(terms.layout);
  for (const py::handle item : stack) {
    const auto [kind, angle, name, frame] = py::cast<StackItem>(item);
    const StackFrame what = stack_frame(kind, angle, name);
    const FrameView view = frames.take(frame, name);
    const py::gil_scoped_release unlocked;
    fit.add(view, what);
  }
  return finished(fit, terms, again);
}

/// What the parts of a fit share.
struct Plan {
  FitTerms terms;
  FitPlan plan;
};

FitPlan plan_of(const std::vector<PlanItem>& stack, const py::function& read,
                const FitTerms& terms) {
  std::vector<StackFrame> frames;
  for (const auto& [kind, angle, name] : stack) frames.push_back(stack_frame(kind, angle, name));
  FrameTaker taker(terms.layout);
  const FrameAgain reader = taker.reader(read);
  const py::gil_scoped_release unlocked;
  return {terms.settings, frames, reader};
}

using Bytes = py::array_t<std::uint8_t, py::array::c_style>;

/// A part of a fit. It travels as an array of bytes, which nothing changes, so that a scheduler may
/// hand it out again, and knows its size.
class Part {
 public:
  explicit Part(const Plan& plan) : terms_(plan.terms), fit_(plan.plan, 1) {}

  void add(const py::object& frame, std::size_t number) {
    FrameTaker taker(terms_.layout);
    const FrameView view = taker.take(frame, "frame " + std::to_string(number));
    const py::gil_scoped_release unlocked;
    fit_.add_planned(view, number);
  }

  Bytes to_bytes() const {
    Bytes bytes(static_cast<py::ssize_t>(fit_.byte_size()));
    const std::span memory(bytes.mutable_data(), static_cast<std::size_t>(bytes.size()));
    const py::gil_scoped_release unlocked;
    fit_.write(std::as_writable_bytes(memory));
    return bytes;
  }

  void merge(const Bytes& bytes) {
    const std::span memory(bytes.data(), static_cast<std::size_t>(bytes.size()));
    const py::gil_scoped_release unlocked;
    fit_.merge(CalibrationFit::from_bytes(std::as_bytes(memory), 1));
  }

  std::shared_ptr<PythonCalibration> finish(const py::function& again) {
    return finished(fit_, terms_, again);
  }

 private:
  FitTerms terms_;
  CalibrationFit fit_;
};

/// What a plan travels with beside its bytes, which have the settings.
py::tuple state_of(const Plan& plan) {
  const std::vector<std::byte> bytes = plan.plan.to_bytes();
  const FitTerms& terms = plan.terms;
  return py::make_tuple(terms.layout.bit_depth, terms.layout.alignment == SampleAlignment::left,
                        terms.camera, terms.date,
                        py::bytes(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

Plan plan_of_state(const py::tuple& state) {
  const auto bytes = py::cast<std::string>(state[4]);
  return {{.layout = layout_of(py::cast<std::optional<int>>(state[0]), py::cast<bool>(state[1])),
           .camera = py::cast<std::string>(state[2]),
           .date = py::cast<std::string>(state[3])},
          FitPlan::from_bytes(std::as_bytes(std::span(bytes)))};
}

}  // namespace

void bind_calibration_fit(py::module_& module) {
  py::class_<FitTerms>(module, "FitTerms")
      .def(py::init(&fit_terms), py::kw_only(), py::arg("phase"), py::arg("origin"),
           py::arg("bit_depth"), py::arg("left_aligned"), py::arg("threads"), py::arg("noise"),
           py::arg("black_level"), py::arg("clip_level"), py::arg("source_dolp"),
           py::arg("angles_known"), py::arg("camera"), py::arg("date"));
  module.def("fit", &fit, py::arg("stack"), py::arg("again"), py::arg("terms"));
  py::class_<Plan>(module, "FitPlan")
      .def(py::init([](const std::vector<PlanItem>& stack, const py::function& read,
                       const FitTerms& terms) {
             return Plan{terms, plan_of(stack, read, terms)};
           }),
           py::arg("stack"), py::arg("read"), py::arg("terms"))
      .def(py::pickle(&state_of, &plan_of_state));
  py::class_<Part>(module, "FitPart")
      .def(py::init<const Plan&>(), py::arg("plan"))
      .def("add", &Part::add, py::arg("frame"), py::arg("number"))
      .def("to_bytes", &Part::to_bytes)
      .def("merge", &Part::merge, py::arg("part"))
      .def("finish", &Part::finish, py::arg("again"));
}

}  // namespace kv::polarization::python

#include "kv/calibration/calibration_fit.h"

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

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
  FrameHands frames(terms.layout);
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
  FrameHands hands(terms.layout);
  const FrameAgain reader = hands.reader(read);
  const py::gil_scoped_release unlocked;
  return {terms.settings, frames, reader};
}

/// A part of a fit. What is merged or pickled stays as it was, so that a scheduler may use it
/// again.
class Part {
 public:
  explicit Part(const Plan& plan) : terms_(plan.terms), fit_(plan.plan, 1) {}
  Part(FitTerms terms, CalibrationFit fit) : terms_(std::move(terms)), fit_(std::move(fit)) {}

  void add(const py::object& frame, std::size_t number) {
    FrameHands hands(terms_.layout);
    const FrameView view = hands.take(frame, "frame " + std::to_string(number));
    const py::gil_scoped_release unlocked;
    fit_.add_planned(view, number);
  }

  void merge(const Part& other) {
    const py::gil_scoped_release unlocked;
    Buffer<std::uint8_t> bytes(other.fit_.byte_size());
    other.fit_.write(std::as_writable_bytes(std::span(bytes)));
    fit_.merge(CalibrationFit::from_bytes(std::as_bytes(std::span(bytes)), 1));
  }

  std::shared_ptr<PythonCalibration> finish(const py::function& again) {
    return finished(fit_, terms_, again);
  }

  const FitTerms& terms() const { return terms_; }

  py::bytes bytes() const {
    const std::size_t size = fit_.byte_size();
    auto bytes = py::reinterpret_steal<py::bytes>(
        PyBytes_FromStringAndSize(nullptr, static_cast<py::ssize_t>(size)));
    if (!bytes) throw py::error_already_set();
    auto* const memory = reinterpret_cast<std::byte*>(PyBytes_AS_STRING(bytes.ptr()));
    const py::gil_scoped_release unlocked;
    fit_.write({memory, size});
    return bytes;
  }

 private:
  FitTerms terms_;
  CalibrationFit fit_;
};

std::span<const std::byte> bytes_of(const py::bytes& bytes) {
  return std::as_bytes(std::span(std::string_view(bytes)));
}

/// What plans and parts travel with beside their bytes; the settings are in these.
py::tuple state_of(const FitTerms& terms, const py::bytes& bytes) {
  return py::make_tuple(terms.layout.bit_depth, terms.layout.alignment == SampleAlignment::left,
                        terms.camera, terms.date, bytes);
}

FitTerms terms_of(const py::tuple& state) {
  return {.layout = layout_of(py::cast<std::optional<int>>(state[0]), py::cast<bool>(state[1])),
          .camera = py::cast<std::string>(state[2]),
          .date = py::cast<std::string>(state[3])};
}

py::bytes bytes_of_plan(const FitPlan& plan) {
  const std::vector<std::byte> bytes = plan.to_bytes();
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
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
      .def(py::pickle(
          [](const Plan& plan) { return state_of(plan.terms, bytes_of_plan(plan.plan)); },
          [](const py::tuple& state) {
            return Plan{terms_of(state),
                        FitPlan::from_bytes(bytes_of(py::cast<py::bytes>(state[4])))};
          }));
  py::class_<Part>(module, "FitPart")
      .def(py::init<const Plan&>(), py::arg("plan"))
      .def("add", &Part::add, py::arg("frame"), py::arg("number"))
      .def("merge", &Part::merge, py::arg("other"))
      .def("finish", &Part::finish, py::arg("again"))
      .def(py::pickle([](const Part& part) { return state_of(part.terms(), part.bytes()); },
                      [](const py::tuple& state) {
                        const auto bytes = py::cast<py::bytes>(state[4]);
                        return Part(terms_of(state),
                                    CalibrationFit::from_bytes(bytes_of(bytes), 1));
                      }));
}

}  // namespace kv::polarization::python

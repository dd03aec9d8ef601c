// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/calibration/calibration.h"

#include <pybind11/numpy.h>
#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "kv/calibration/analyser.h"
#include "kv/calibration/calibration_file.h"
#include "kv/calibration/report.h"
#include "python/bindings/bindings.h"
#include "python/bindings/calibration_state.h"
#include "python/bindings/frame_loop.h"
#include "python/bindings/python_calibration.h"
#include "toolkit/api/memory_checks.h"

namespace kv::polarization::python {
namespace {

using Path = std::filesystem::path;

std::shared_ptr<PythonCalibration> load(const Path& path) {
  const py::gil_scoped_release unlocked;
  return std::make_shared<PythonCalibration>(load_calibration(path));
}

void save(const PythonCalibration& calibration, const Path& path) {
  const py::gil_scoped_release unlocked;
  save_calibration(*calibration, path);
}

std::string report(const PythonCalibration& calibration) {
  const py::gil_scoped_release unlocked;
  return calibration_report(*calibration);
}

void save_report(const PythonCalibration& calibration, const Path& path) {
  const py::gil_scoped_release unlocked;
  save_calibration_report(path, *calibration);
}

py::array_t<float> weights(const PythonCalibration& calibration) {
  const Weights weights = library_weights(*calibration);
  py::array_t<float> array(std::vector<py::ssize_t>{4, 4, 4});
  float* values = array.mutable_data();
  for (const CoefficientSet* set :
       {&weights.behind_0, &weights.behind_45, &weights.behind_90, &weights.behind_135}) {
    values = std::ranges::copy(*set, values).out;
  }
  return array;
}

py::dict maps(const py::object& calibration) {
  return maps_of(**calibration.cast<PythonCalibration*>(), calibration);
}

std::uint16_t checked_pedestal(std::int64_t pedestal) {
  if (pedestal < 0 || pedestal > 32767) {
    refuse("the pedestal must be 0 to 32767 corrected counts, not " + std::to_string(pedestal));
  }
  return static_cast<std::uint16_t>(pedestal);
}

}  // namespace

py::tuple PythonCalibration::apply(const py::object& objects, const py::object& out,
                                   const std::optional<Origin>& origin, bool per_cell, bool rescue,
                                   std::int64_t pedestal, bool left_aligned, bool wants_flags,
                                   std::int64_t threads) {
  const Calibration& calibration = *calibration_;
  const Mosaic& own = calibration.mosaic;
  const Mosaic mosaic =
      mosaic_of(cell_angles(own.phase)[0], origin.value_or(Origin{own.x_origin, own.y_origin}));
  const FrameStack frames(objects, layout_of(calibration.bit_depth, left_aligned));
  std::vector<Output> outputs;
  outputs.push_back(make_output(frames, "out", out, py::dtype::of<std::uint16_t>(), *memory_));
  check_disjoint(outputs, frames.blocks());
  if (wants_flags) {
    outputs.push_back(
        make_output(frames, "flags", py::none(), py::dtype::of<std::uint8_t>(), *memory_));
  }
  const CorrectorUse use{mosaic.x_origin,
                         mosaic.y_origin,
                         frames.width(),
                         frames.height(),
                         per_cell,
                         rescue,
                         checked_pedestal(pedestal),
                         thread_count(threads)};
  std::unique_ptr<CorrectorAtWork> worker;
  {
    const py::gil_scoped_release unlocked;
    worker = spare_.take(calibration, use);
  }
  for_each_frame(frames.count(), [&](std::size_t index) {
    std::span<std::uint8_t> flags;
    if (wants_flags) {
      const BlockStack& blocks = outputs[1].blocks;
      flags = {reinterpret_cast<std::uint8_t*>(blocks[index]), blocks.block_bytes()};
    }
    worker->corrector.correct(frames[index], worker->corrected, flags);
    std::ranges::copy(worker->corrected.samples,
                      reinterpret_cast<std::uint16_t*>(outputs[0].blocks[index]));
  });
  const int gained_bits = worker->corrector.gained_bits();
  spare_.give_back(std::move(worker));
  return py::make_tuple(outputs[0].array,
                        wants_flags ? py::object(outputs[1].array) : py::object(py::none()),
                        gained_bits);
}

void bind_calibration(py::module_& module) {
  py::class_<PythonCalibration, std::shared_ptr<PythonCalibration>>(module, "Calibration")
      .def_static("load", &load, py::arg("path"))
      .def("save", &save, py::arg("path"))
      .def("report", &report)
      .def("save_report", &save_report, py::arg("path"))
      .def("weights", &weights)
      .def("fields", [](const PythonCalibration& calibration) { return fields_of(*calibration); })
      .def_property_readonly("maps", &maps)
      .def("apply", &PythonCalibration::apply, py::arg("frames"), py::arg("out"), py::kw_only(),
           py::arg("origin"), py::arg("per_cell"), py::arg("rescue"), py::arg("pedestal"),
           py::arg("left_aligned"), py::arg("flags"), py::arg("threads"))
      .def(py::pickle(
          [](const py::object& calibration) {
            const auto& known = *calibration.cast<PythonCalibration*>();
            return py::make_tuple(fields_of(*known), maps(calibration));
          },
          [](const py::tuple& state) {
            if (state.size() != 2) throw py::value_error("this is not the state of a calibration");
            return std::make_shared<PythonCalibration>(calibration_of(state[0], state[1]));
          }));
}

}  // namespace kv::polarization::python

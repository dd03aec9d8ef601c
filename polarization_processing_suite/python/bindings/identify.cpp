// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/calibration/identify.h"

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <array>
#include <optional>

#include "python/bindings/arguments.h"
#include "python/bindings/bindings.h"
#include "toolkit/api/memory_checks.h"

namespace kv::polarization::python {
namespace {

const FrameView& single(const FrameStack& frames) {
  if (!frames.shape_with({}).empty()) refuse("each frame must have two axes, (rows, columns)");
  return frames.first();
}

py::dict dict_of(const MosaicIdentity& identity) {
  py::list candidates;
  for (const MosaicCandidate& candidate : identity.candidates) {
    candidates.append(
        py::make_tuple(cell_angles(candidate.phase)[0], candidate.mirrored, candidate.confidence));
  }
  py::dict dict;
  dict["candidates"] = candidates;
  dict["is_told"] = identity.is_told;
  dict["verdict"] = identity.verdict;
  dict["dolp"] = py::make_tuple(identity.dolp[0], identity.dolp[1]);
  dict["angle_sigma"] = py::make_tuple(identity.angle_sigma[0], identity.angle_sigma[1]);
  dict["turn"] = identity.turn;
  dict["imbalance"] = identity.imbalance;
  return dict;
}

py::dict identify(const py::object& first, const py::object& second, double turn,
                  std::optional<double> angle_of_first, bool may_be_mirrored, const Origin& origin,
                  const std::optional<std::array<int, 4>>& region, double black_level,
                  double angle_error, std::optional<int> bit_depth, bool left_aligned) {
  const SampleLayout layout = layout_of(bit_depth, left_aligned);
  const FrameStack first_frame(first, layout);
  const FrameStack second_frame(second, layout);
  TurnedLight light;
  light.turn = turn;
  light.angle_of_first = angle_of_first;
  light.may_be_mirrored = may_be_mirrored;
  light.x_origin = origin.first;
  light.y_origin = origin.second;
  light.black_level = black_level;
  light.angle_error = angle_error;
  if (region) light.region = Rectangle{(*region)[0], (*region)[1], (*region)[2], (*region)[3]};
  const FrameView& one = single(first_frame);
  const FrameView& other = single(second_frame);
  MosaicIdentity identity;
  {
    const py::gil_scoped_release unlocked;
    identity = identify_mosaic(one, other, light);
  }
  return dict_of(identity);
}

}  // namespace

void bind_identify(py::module_& module) {
  module.def("identify_mosaic", &identify, py::arg("first"), py::arg("second"), py::kw_only(),
             py::arg("turn"), py::arg("angle_of_first"), py::arg("may_be_mirrored"),
             py::arg("origin"), py::arg("region"), py::arg("black_level"), py::arg("angle_error"),
             py::arg("bit_depth"), py::arg("left_aligned"));
}

}  // namespace kv::polarization::python

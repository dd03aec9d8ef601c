// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <string>
#include <vector>

#include "python/bindings/arguments.h"
#include "python/bindings/bindings.h"
#include "python/bindings/frame_loop.h"
#include "python/bindings/pictures.h"
#include "python/bindings/python_calibration.h"
#include "python/bindings/python_processor.h"

namespace kv::polarization::python {
namespace {

using WeightArray = py::array_t<float, py::array::c_style | py::array::forcecast>;

Weights weights_of(const py::object& given) {
  const WeightArray array(array_of(given, "weights"));
  if (array.ndim() != 3 || array.shape(0) != 4 || array.shape(1) != 4 || array.shape(2) != 4) {
    refuse(
        "weights must have the shape (4, 4, 4): polarizers 0, 45, 90, 135, by rows of S0, S1, "
        "S2 and a spare one, by columns of the pixel and its neighbours");
  }
  Weights weights;
  const float* values = array.data();
  for (CoefficientSet* set :
       {&weights.behind_0, &weights.behind_45, &weights.behind_90, &weights.behind_135}) {
    std::copy_n(values, set->size(), set->begin());
    values += set->size();
  }
  return weights;
}

const PlaneTraits& plane_of(const std::string& name) {
  return kPlanes[place_of(name, kPlanes, "plane")];
}

std::vector<Output> plane_outputs(const FrameStack& frames, const Names& names, const Arrays& given,
                                  ResultMemory& memory) {
  check_names(names, given, "plane");
  std::vector<Output> outputs;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const bool is_pair = plane_of(names[i]).element == PlaneElement::float_pair;
    const py::dtype type = is_pair ? py::dtype::of<float>() : py::dtype::of<std::uint16_t>();
    outputs.push_back(make_output(frames, names[i], given[i], type, memory, is_pair ? 2 : 1));
  }
  return outputs;
}

PlaneViews views_of(const std::vector<Output>& outputs, std::size_t index,
                    std::uint16_t output_max) {
  PlaneViews views;
  for (const Output& output : outputs) {
    const Plane plane = plane_of(output.name).plane;
    std::byte* const first = output.blocks[index];
    const std::size_t bytes = output.blocks.block_bytes();
    if (plane == Plane::normalized_stokes) {
      views.normalized_stokes = {reinterpret_cast<float*>(first), bytes / sizeof(float)};
    } else {
      views.level(plane) = {{reinterpret_cast<std::uint16_t*>(first), bytes / 2}, output_max};
    }
  }
  return views;
}

std::unique_ptr<PythonProcessor> processor_of(int phase, const Origin& origin,
                                              const std::shared_ptr<PythonCalibration>& calibration,
                                              std::optional<int> bit_depth, bool left_aligned,
                                              float black_level, const GivenClipLevel& clip_level,
                                              bool rescue, const std::optional<NoiseNumbers>& noise,
                                              const py::object& bad_pixels,
                                              std::optional<float> compensation,
                                              const py::object& weights, bool weights_everywhere) {
  Sensor sensor;
  sensor.mosaic = mosaic_of(phase, origin);
  sensor.layout = layout_of(bit_depth, left_aligned);
  if (!weights.is_none()) sensor.weights = weights_of(weights);
  sensor.reach = weights_everywhere ? WeightReach::every_pixel : WeightReach::as_library;
  if (calibration) sensor.calibration = calibration->shared();
  SampleSettings& samples = sensor.maps.samples;
  samples.black_level = black_level;
  samples.clip_level = clip_level_of(clip_level);
  samples.rescue = rescue;
  samples.noise = noise_of(noise);
  if (compensation) sensor.maps.compensation = IntensityCompensation{*compensation};
  if (!bad_pixels.is_none()) set_bad_pixels(sensor, byte_mask(bad_pixels, "bad_pixels"));
  return std::make_unique<PythonProcessor>(std::move(sensor));
}

}  // namespace

PythonProcessor::PythonProcessor(Sensor sensor)
    : sensor_(std::move(sensor)), engines_(sensor_), memory_(std::make_shared<ResultMemory>()) {
  check(sensor_);
  const EnginePool::Lease at_least_one(engines_, 1);
}

Arrays arrays_of(const std::vector<Output>& outputs) {
  Arrays arrays;
  for (const Output& output : outputs) arrays.push_back(output.array);
  return arrays;
}

void check_names(const Names& names, const Arrays& given, const std::string& what) {
  if (names.empty()) refuse("no " + what + " is named; name one at least");
  for (auto name = names.begin(); name != names.end(); ++name) {
    if (std::find(names.begin(), name, *name) != name) {
      refuse("the " + what + " '" + *name + "' is named twice");
    }
  }
  if (given.size() != names.size()) {
    refuse("out has " + std::to_string(given.size()) + " arrays for " +
           std::to_string(names.size()) + " " + what + "s; it must have one for each");
  }
}

Arrays PythonProcessor::transform(const py::object& objects, const Names& names,
                                  const Arrays& given, std::int64_t output_max,
                                  std::int64_t threads) {
  if (output_max < 1 || output_max > 65535) {
    refuse("output_max must be 1 to 65535, not " + std::to_string(output_max));
  }
  const auto full_scale = static_cast<std::uint16_t>(output_max);
  const FrameStack frames(objects, sensor_.layout);
  const std::vector<Output> outputs = plane_outputs(frames, names, given, *memory_);
  check_disjoint(outputs, frames.blocks());
  for_each_frame(engines_, frames.count(), threads, [&](Engine& engine, std::size_t index) {
    engine.transform(frames[index], views_of(outputs, index, full_scale));
  });
  return arrays_of(outputs);
}

void bind_processor(py::module_& module) {
  py::class_<PythonProcessor>(module, "Processor")
      .def(py::init(&processor_of), py::kw_only(), py::arg("phase"), py::arg("origin"),
           py::arg("calibration"), py::arg("bit_depth"), py::arg("left_aligned"),
           py::arg("black_level"), py::arg("clip_level"), py::arg("rescue"), py::arg("noise"),
           py::arg("bad_pixels"), py::arg("compensation"), py::arg("weights"),
           py::arg("weights_everywhere"))
      .def("transform", &PythonProcessor::transform, py::arg("frames"), py::arg("planes"),
           py::arg("out"), py::arg("output_max"), py::arg("threads"))
      .def("maps", &PythonProcessor::maps, py::arg("frames"), py::arg("maps"), py::arg("out"),
           py::arg("threads"))
      .def("region", &PythonProcessor::region, py::arg("frames"), py::arg("region"),
           py::arg("mask"), py::arg("threads"))
      .def(
          "pictures", [](PythonProcessor& processor) { return Pictures(processor.engines()); },
          py::keep_alive<0, 1>());
}

}  // namespace kv::polarization::python

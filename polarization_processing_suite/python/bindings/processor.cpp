#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <string>
#include <vector>

#include "kv/polarization/fault.h"
#include "python/bindings/bindings.h"
#include "python/bindings/frame_loop.h"
#include "toolkit/api/memory_checks.h"

namespace kv::polarization::python {
namespace {

using Names = std::vector<std::string>;
using Arrays = std::vector<py::object>;  // None for one to be made
using WeightArray = py::array_t<float, py::array::c_style | py::array::forcecast>;

Mosaic mosaic_of(int phase, int x_origin, int y_origin) {
  const std::optional<PolarPhase> known = phase_at(phase);
  if (!known) {
    refuse(
        "the phase must be 0, 45, 90 or 135, the angle of the polarizer before the sensor's "
        "top left pixel, not " +
        std::to_string(phase));
  }
  if (x_origin < 0 || y_origin < 0) {
    refuse(
        "the origin must be the sensor's column and row of the frame's first pixel, from 0 up, "
        "not (" +
        std::to_string(x_origin) + ", " + std::to_string(y_origin) + ")");
  }
  return {.phase = *known, .x_origin = x_origin, .y_origin = y_origin};
}

Weights weights_of(const WeightArray& array) {
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

Plane plane_of(const std::string& name) {
  if (const std::optional<Plane> plane = plane_named(name)) return *plane;
  std::string known;
  for (const PlaneTraits& traits : kPlanes) {
    known += (known.empty() ? "" : ", ") + std::string(traits.name);
  }
  refuse("there is no plane '" + name + "'; there are " + known);
}

/// A processor of Python: any number of its threads may use it at the same time.
class PythonProcessor {
 public:
  explicit PythonProcessor(Sensor sensor) : sensor_(std::move(sensor)), engines_(sensor_) {
    const EnginePool::Lease at_least_one(engines_, 1);
  }

  Arrays transform(const py::object& frames, const Names& names, const Arrays& given,
                   std::int64_t output_max, std::int64_t threads);

 private:
  Sensor sensor_;
  EnginePool engines_;
};

std::vector<Output> plane_outputs(const FrameStack& frames, const Names& names,
                                  const Arrays& given) {
  std::vector<Output> outputs;
  OutputSet wanted;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const Plane plane = plane_of(names[i]);
    if (wanted.has(plane)) refuse("the plane '" + names[i] + "' is named twice");
    wanted.add(plane);
    const bool is_pair = traits_of(plane).element == PlaneElement::float_pair;
    std::vector<py::ssize_t> block{frames.height(), frames.width()};
    if (is_pair) block.push_back(2);
    const py::dtype type = is_pair ? py::dtype::of<float>() : py::dtype::of<std::uint16_t>();
    py::array array =
        output_array(names[i], given[i], type, frames.shape_with(block), block.size());
    const auto bytes = pixel_count(frames.width(), frames.height()) *
                       (is_pair ? 2 * sizeof(float) : sizeof(std::uint16_t));
    BlockStack blocks(array, block.size(), bytes);
    outputs.push_back({names[i], std::move(array), std::move(blocks)});
  }
  if (outputs.empty()) refuse("no plane is named; name one at least");
  return outputs;
}

PlaneViews views_of(const std::vector<Output>& outputs, std::size_t index,
                    std::uint16_t output_max) {
  PlaneViews views;
  for (const Output& output : outputs) {
    const Plane plane = plane_named(output.name).value();
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

Arrays PythonProcessor::transform(const py::object& objects, const Names& names,
                                  const Arrays& given, std::int64_t output_max,
                                  std::int64_t threads) {
  if (output_max < 1 || output_max > 65535) {
    refuse("output_max must be 1 to 65535, not " + std::to_string(output_max));
  }
  const auto full_scale = static_cast<std::uint16_t>(output_max);
  const FrameStack frames(objects, sensor_.layout);
  const std::vector<Output> outputs = plane_outputs(frames, names, given);
  check_disjoint(outputs, frames.blocks());
  for_each_frame(engines_, frames.count(), threads, [&](Engine& engine, std::size_t index) {
    engine.transform(frames[index], views_of(outputs, index, full_scale));
  });
  Arrays arrays;
  for (const Output& output : outputs) arrays.push_back(output.array);
  return arrays;
}

}  // namespace

void bind_processor(py::module_& module) {
  py::class_<PythonProcessor>(module, "Processor")
      .def(py::init([](int phase, std::pair<int, int> origin, std::optional<int> bit_depth,
                       bool left_aligned, const std::optional<WeightArray>& weights,
                       bool weights_everywhere) {
             Sensor sensor;
             sensor.mosaic = mosaic_of(phase, origin.first, origin.second);
             sensor.layout = {bit_depth,
                              left_aligned ? SampleAlignment::left : SampleAlignment::right};
             if (weights) sensor.weights = weights_of(*weights);
             sensor.reach = weights_everywhere ? WeightReach::every_pixel : WeightReach::as_library;
             return std::make_unique<PythonProcessor>(std::move(sensor));
           }),
           py::kw_only(), py::arg("phase"), py::arg("origin"), py::arg("bit_depth"),
           py::arg("left_aligned"), py::arg("weights"), py::arg("weights_everywhere"))
      .def("transform", &PythonProcessor::transform, py::arg("frames"), py::arg("planes"),
           py::arg("out"), py::arg("output_max"), py::arg("threads"));
}

}  // namespace kv::polarization::python

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "python/bindings/frame_loop.h"
#include "python/bindings/python_processor.h"

namespace kv::polarization::python {
namespace {

const MapTraits& map_of(const std::string& name) { return kMaps[place_of(name, kMaps, "map")]; }

std::vector<Output> map_outputs(const FrameStack& frames, const Names& names, const Arrays& given,
                                ResultMemory& memory) {
  check_names(names, given, "map");
  std::vector<Output> outputs;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const bool is_bytes = map_of(names[i]).map == Map::quality;
    const py::dtype type = is_bytes ? py::dtype::of<std::uint8_t>() : py::dtype::of<float>();
    outputs.push_back(make_output(frames, names[i], given[i], type, memory));
  }
  return outputs;
}

MapViews views_of(const std::vector<Output>& outputs, std::size_t index) {
  MapViews views;
  for (const Output& output : outputs) {
    const Map map = map_of(output.name).map;
    std::byte* const first = output.blocks[index];
    const std::size_t bytes = output.blocks.block_bytes();
    if (map == Map::quality) {
      views.quality = {reinterpret_cast<std::uint8_t*>(first), bytes};
    } else {
      views.values(map) = {reinterpret_cast<float*>(first), bytes / sizeof(float)};
    }
  }
  return views;
}

template <class Number>
struct Column {
  std::string_view name;
  Number RegionStatistics::*member;
};

constexpr Column<std::size_t> kCounts[] = {{"cells", &RegionStatistics::cells},
                                           {"left_out", &RegionStatistics::left_out},
                                           {"clipped", &RegionStatistics::clipped},
                                           {"rescued", &RegionStatistics::rescued},
                                           {"bad", &RegionStatistics::bad}};
constexpr Column<double> kValues[] = {{"s0", &RegionStatistics::s0},
                                      {"s1", &RegionStatistics::s1},
                                      {"s2", &RegionStatistics::s2},
                                      {"dolp", &RegionStatistics::dolp},
                                      {"angle", &RegionStatistics::angle},
                                      {"debiased_dolp", &RegionStatistics::debiased_dolp},
                                      {"s0_sigma", &RegionStatistics::s0_sigma},
                                      {"s1_sigma", &RegionStatistics::s1_sigma},
                                      {"s2_sigma", &RegionStatistics::s2_sigma},
                                      {"dolp_sigma", &RegionStatistics::dolp_sigma},
                                      {"angle_sigma", &RegionStatistics::angle_sigma}};

template <class Element, class Columns>
void add_columns(const std::vector<RegionStatistics>& results,
                 const std::vector<py::ssize_t>& shape, const Columns& columns, py::dict& arrays) {
  for (const auto& column : columns) {
    py::array_t<Element> array(shape);
    Element* element = array.mutable_data();
    for (const RegionStatistics& result : results) {
      *element++ = static_cast<Element>(result.*column.member);
    }
    arrays[py::str(std::string(column.name))] = array;
  }
}

ByteMask mask_of(const py::object& object, const FrameStack& frames) {
  ByteMask mask = byte_mask(object, "mask");
  if (mask.width != frames.width() || mask.height != frames.height()) {
    refuse("mask has " + std::to_string(mask.height) + " rows of " + std::to_string(mask.width) +
           "; it must have the frames' " + std::to_string(frames.height()) + " rows of " +
           std::to_string(frames.width()));
  }
  return mask;
}

}  // namespace

Arrays PythonProcessor::maps(const py::object& objects, const Names& names, const Arrays& given,
                             std::int64_t threads) {
  const FrameStack frames(objects, sensor_.layout);
  const std::vector<Output> outputs = map_outputs(frames, names, given, *memory_);
  check_disjoint(outputs, frames.blocks());
  for_each_frame(engines_, frames.count(), threads, [&](Engine& engine, std::size_t index) {
    engine.fill_maps(frames[index], views_of(outputs, index));
  });
  return arrays_of(outputs);
}

py::dict PythonProcessor::region(const py::object& objects,
                                 const std::optional<std::array<int, 4>>& rectangle,
                                 const py::object& mask, std::int64_t threads) {
  const FrameStack frames(objects, sensor_.layout);
  if (rectangle && !mask.is_none()) refuse("region and mask are both given; give one of them");
  ByteMask pixels;
  Region region = Rectangle{0, 0, frames.width(), frames.height()};
  if (rectangle) {
    const auto& [column, row, width, height] = *rectangle;
    region = Rectangle{column, row, width, height};
  } else if (!mask.is_none()) {
    pixels = mask_of(mask, frames);
    region = std::span<const std::uint8_t>(pixels.bytes);
  }
  std::vector<RegionStatistics> results(frames.count());
  for_each_frame(engines_, frames.count(), threads, [&](Engine& engine, std::size_t index) {
    results[index] = engine.region(frames[index], region);
  });
  py::dict arrays;
  add_columns<std::int64_t>(results, frames.shape_with({}), kCounts, arrays);
  add_columns<double>(results, frames.shape_with({}), kValues, arrays);
  return arrays;
}

}  // namespace kv::polarization::python

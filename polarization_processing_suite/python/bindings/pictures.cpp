// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "python/bindings/pictures.h"

#include <pybind11/stl.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <span>

#include "kv/pictures/picture_kinds.h"
#include "python/bindings/bindings.h"
#include "python/bindings/frame_loop.h"
#include "python/bindings/python_processor.h"
#include "toolkit/api/memory_checks.h"

namespace kv::polarization::python {
namespace {

PictureKind kind_of(const std::string& name) {
  return kPictureKinds[place_of(name, kPictureKinds, "picture")].kind;
}

AngleStyle style_of(const std::string& name) {
  if (const std::optional<AngleStyle> style = angle_style_of(kind_of(name))) return *style;
  refuse("the picture '" + name + "' does not show angles as hues; " +
         "angle, angle_light, angle_even, angle_even_light do");
}

FrameStack single_frame(const py::object& object, const SampleLayout& layout) {
  FrameStack frames(object, layout);
  if (!frames.shape_with({}).empty()) {
    refuse(
        "a picture is of one frame, (rows, columns); choose one of the stack, such as frames[0]");
  }
  return frames;
}

/// Calls work(maps) without the interpreter's lock.
void with_maps(EnginePool& engines, const py::object& object, OutputSet wanted,
               const std::function<void(const PictureMaps&)>& work) {
  const FrameStack frames = single_frame(object, engines.sensor().layout);
  for_each_frame(engines, 1, 0, [&](Engine& engine, std::size_t index) {
    work(engine.picture_maps(frames[index], wanted));
  });
}

/// The first columns of a picture, grey ones in three channels.
py::array array_of_columns(const Picture& picture, int columns) {
  py::array_t<std::uint8_t> array({picture.height, columns, 3});
  std::uint8_t* to = array.mutable_data();
  const py::gil_scoped_release unlocked;
  const auto count = static_cast<std::size_t>(columns);
  for (int row = 0; row < picture.height; ++row) {
    const std::uint8_t* from = &picture.bytes[static_cast<std::size_t>(row) * picture.row_size()];
    if (picture.channels == 3) {
      to = std::copy_n(from, 3 * count, to);
    } else {
      for (std::size_t column = 0; column < count; ++column) to = std::fill_n(to, 3, from[column]);
    }
  }
  return array;
}

using Numbers = py::array_t<double, py::array::c_style | py::array::forcecast>;

/// Gives each number its colour, along a new last axis.
py::array colours_of(const Numbers& numbers, const std::function<Colour(std::size_t)>& colour_at) {
  std::vector<py::ssize_t> shape(numbers.shape(), numbers.shape() + numbers.ndim());
  shape.push_back(3);
  py::array_t<std::uint8_t> array(shape);
  std::uint8_t* const colours = array.mutable_data();
  const auto count = static_cast<std::size_t>(numbers.size());
  for (std::size_t i = 0; i < count; ++i) std::ranges::copy(colour_at(i), colours + 3 * i);
  return array;
}

py::array angle_colours(const Numbers& degrees, const Numbers& strengths, const std::string& kind) {
  const AngleStyle style = style_of(kind);
  if (!std::ranges::equal(
          std::span(degrees.shape(), static_cast<std::size_t>(degrees.ndim())),
          std::span(strengths.shape(), static_cast<std::size_t>(strengths.ndim())))) {
    refuse("degrees and strengths must have the same shape");
  }
  return colours_of(degrees, [&](std::size_t index) {
    const double angle = degrees.data()[index];
    const double strength = strengths.data()[index];
    // Neutral where the angle is unknown.
    const bool known = std::isfinite(angle) && strength > 0;
    const double weight = known ? std::round(255 * std::min(strength, 1.0)) : 0;
    return mixed(angle_colour(style.hues, known ? angle : 0), style.unpolarized,
                 static_cast<std::uint8_t>(weight));
  });
}

py::array ratio_colours(const Numbers& ratios) {
  return colours_of(ratios, [&](std::size_t index) {
    const double ratio = ratios.data()[index];
    return diverging_colour(std::isnan(ratio) ? 0 : ratio);
  });
}

}  // namespace

py::array Pictures::picture(const py::object& frame, const std::string& name,
                            std::optional<double> dolp_white, std::optional<double> ratio_limit,
                            bool legend) const {
  const PictureKind kind = kind_of(name);
  Picture picture(0, 0, 1);
  int columns = 0;
  with_maps(engines_, frame, traits_of(kind).needs, [&](const PictureMaps& maps) {
    PictureRanges ranges = ranges_of(maps);
    ranges.dolp_white = dolp_white.value_or(ranges.dolp_white);
    ranges.ratio_limit = ratio_limit.value_or(ranges.ratio_limit);
    picture = picture_of(kind, maps, ranges);
    // The legend stands on the right of the picture's own columns.
    columns = legend || kind == PictureKind::contact_sheet ? picture.width : maps.width;
  });
  return array_of_columns(picture, columns);
}

std::pair<double, double> Pictures::ranges(const py::object& frame) const {
  PictureRanges ranges;
  with_maps(engines_, frame, OutputSet{Plane::dolp, Plane::normalized_stokes},
            [&](const PictureMaps& maps) { ranges = ranges_of(maps); });
  return {ranges.dolp_white, ranges.ratio_limit};
}

py::array Pictures::brightness(const py::object& frame) const {
  const FrameStack frames = single_frame(frame, engines_.sensor().layout);
  py::array_t<std::uint16_t> array({frames.height(), frames.width()});
  std::uint16_t* const to = array.mutable_data();
  with_maps(engines_, frame, {},
            [to](const PictureMaps& maps) { std::ranges::copy(maps.brightness, to); });
  return array;
}

void bind_pictures(py::module_& module) {
  py::class_<Pictures>(module, "Pictures")
      .def("picture", &Pictures::picture, py::arg("frame"), py::arg("kind"), py::kw_only(),
           py::arg("dolp_white"), py::arg("ratio_limit"), py::arg("legend"))
      .def("ranges", &Pictures::ranges, py::arg("frame"))
      .def("brightness", &Pictures::brightness, py::arg("frame"));
  module.def("angle_colours", &angle_colours, py::arg("degrees"), py::arg("strengths"),
             py::arg("kind"));
  module.def("ratio_colours", &ratio_colours, py::arg("ratios"));
  std::vector<std::string> kinds;
  for (const PictureTraits& traits : kPictureKinds) kinds.emplace_back(traits.name);
  module.attr("PICTURE_KINDS") = py::tuple(py::cast(kinds));
}

}  // namespace kv::polarization::python

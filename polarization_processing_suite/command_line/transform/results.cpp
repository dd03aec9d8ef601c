// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/transform/results.h"

#include <utility>

#include "command_line/number_text.h"
#include "kv/image_files/pixel_format.h"

namespace kv::polarization {
namespace {

/// Floats go where they can, if the format of the planes takes none.
ImageFormat format_of(const Recipe& recipe, ImageKind kind) {
  if (kind == ImageKind::picture) return preferred_format(kind);
  return traits_of(recipe.format).writes(kind) ? recipe.format : preferred_format(kind);
}

class Arguments {
 public:
  void add(const std::string& option, const std::string& value) {
    list_.push_back(option);
    list_.push_back(value);
  }
  void add(const std::string& flag) { list_.push_back(flag); }
  std::vector<std::string> take() { return std::move(list_); }

 private:
  std::vector<std::string> list_;
};

void add_raw_shape(const RawShape& shape, Arguments& arguments) {
  arguments.add("--width", std::to_string(shape.width));
  arguments.add("--height", std::to_string(shape.height));
  arguments.add("--raw-format", std::string(traits_of(shape.pixel_format).name));
}

void add_frame(const Recipe& recipe, Arguments& arguments) {
  const Mosaic& mosaic = recipe.mosaic;
  if (recipe.mosaic_given) {
    arguments.add("--phase", std::to_string(cell_angles(mosaic.phase)[0]));
    if (mosaic.x_origin != 0 || mosaic.y_origin != 0) {
      arguments.add("--origin",
                    std::to_string(mosaic.x_origin) + "," + std::to_string(mosaic.y_origin));
    }
  }
  if (recipe.bit_depth) arguments.add("--bit-depth", std::to_string(*recipe.bit_depth));
  if (recipe.raw_shape) add_raw_shape(*recipe.raw_shape, arguments);
  if (recipe.calibration) {
    const std::u8string name = recipe.calibration->generic_u8string();
    arguments.add("--calibration", std::string(name.begin(), name.end()));
  }
}

}  // namespace

std::vector<Result> results_of(const Recipe& recipe) {
  std::vector<Result> results;
  for (const PlaneTraits& traits : kPlanes) {
    if (!recipe.planes.has(traits.plane)) continue;
    const ImageKind kind =
        traits.element == PlaneElement::float_pair ? ImageKind::floats : ImageKind::grey;
    results.push_back({traits.plane, std::string(traits.name), format_of(recipe, kind), kind});
  }
  if (recipe.mean) {
    results.push_back({MeanPlane(), "mean", recipe.format, ImageKind::grey});
  }
  for (const PictureKind kind : recipe.pictures) {
    results.push_back({kind, std::string(traits_of(kind).name) + "_picture",
                       format_of(recipe, ImageKind::picture), ImageKind::picture});
  }
  return results;
}

std::vector<std::string> arguments_for(const Recipe& recipe, std::span<const Result> results) {
  Arguments arguments;
  add_frame(recipe, arguments);
  const Result& first = results.front();
  if (const auto* picture = std::get_if<PictureKind>(&first.what)) {
    arguments.add("--no-planes");
    arguments.add("--pictures", std::string(traits_of(*picture).name));
    if (recipe.dolp_white) arguments.add("--dolp-white", shortest_text(*recipe.dolp_white));
  } else {
    std::string planes;
    for (const Result& result : results) planes += (planes.empty() ? "" : ",") + result.name;
    arguments.add("--planes", planes);
    arguments.add("--no-pictures");
    if (recipe.output_max != 65535) {
      arguments.add("--output-max", std::to_string(recipe.output_max));
    }
    arguments.add("--format", std::string(traits_of(first.format).name));
  }
  if (recipe.compression) {
    arguments.add("--compression",
                  kCompressionNames[static_cast<std::size_t>(*recipe.compression)]);
  }
  return arguments.take();
}

}  // namespace kv::polarization

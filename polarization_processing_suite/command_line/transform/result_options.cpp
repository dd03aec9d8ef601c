// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/transform/result_options.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "command_line/options/values.h"
#include "kv/image_files/image_format.h"

namespace kv::polarization {
namespace {

std::vector<std::string> result_choices() {
  std::vector<std::string> names;
  names.reserve(kPlanes.size() + 1);
  for (const PlaneTraits& traits : kPlanes) names.emplace_back(traits.name);
  names.emplace_back("mean");
  return names;
}

void parse_planes(const std::string& list, Recipe& recipe) {
  recipe.planes = {};
  recipe.mean = false;
  for (const std::string& name : split_list(list)) {
    const auto plane = plane_named(name);
    if (name == "mean") {
      recipe.mean = true;
    } else if (plane) {
      recipe.planes.add(*plane);
    } else {
      throw BadValue("there is no plane '" + name + "'; the planes are " +
                     comma_list(result_choices()));
    }
  }
  if (recipe.planes.empty() && !recipe.mean) {
    throw BadValue("the list is empty; name a plane");
  }
}

std::vector<std::string> picture_names() {
  std::vector<std::string> names;
  names.reserve(kPictureKinds.size());
  for (const PictureTraits& traits : kPictureKinds) names.emplace_back(traits.name);
  return names;
}

std::vector<PictureKind> parse_pictures(const std::string& list) {
  std::vector<PictureKind> kinds;
  for (const std::string& name : split_list(list)) {
    const auto kind = picture_kind_named(name);
    if (!kind) {
      throw BadValue("there is no picture '" + name + "'; the pictures are " +
                     comma_list(picture_names()));
    }
    if (std::find(kinds.begin(), kinds.end(), *kind) == kinds.end()) kinds.push_back(*kind);
  }
  if (kinds.empty()) throw BadValue("the list is empty; name a picture");
  return kinds;
}

/// Names of the formats that planes are written in.
std::vector<std::string> plane_formats() {
  std::vector<std::string> names;
  for (const ImageFormatTraits& traits : image_formats()) {
    if (traits.writes(ImageKind::grey)) names.emplace_back(traits.name);
  }
  return names;
}

/// Also by an ending, such as tif.
ImageFormat plane_format_named(const std::string& name) {
  const auto format = format_named(name);
  const auto names = plane_formats();
  return format_named(choice_of(format ? std::string(traits_of(*format).name) : name, names))
      .value();
}

void add_planes(OptionList& options, Recipe& recipe) {
  options.add(
      {.names = "--planes",
       .value = "LIST",
       .summary = "Planes to write, of",
       .choices = result_choices(),
       .initial = "all but mean"},
      [&recipe](const std::string& list) { parse_planes(list, recipe); },
      [&recipe] {
        recipe.planes = {};
        recipe.mean = false;
      });
  options.add({.names = "--output-max",
               .value = "N",
               .summary = "Full scale of the 16-bit planes",
               .initial = "65535"},
              whole_number_into(recipe.output_max, 1, 65535));
  options.add({.names = "--format",
               .value = "NAME",
               .summary = "File format of the planes",
               .details = "normalized_stokes becomes TIFF, or NPY, where the format holds no "
                          "floats. Planes of raw and npy have a file NAME.json beside them, "
                          "which tells how they were made, as other formats do within.",
               .choices = plane_formats(),
               .initial = std::string(traits_of(recipe.format).name)},
              [&recipe](const std::string& name) { recipe.format = plane_format_named(name); });
  options.add({.names = "--compression",
               .value = "HOW",
               .summary = "Of PNG and TIFF, without loss",
               .details = "none: as fast as the disk. fast: some 600 MB of samples a second and "
                          "core. small: a few per cent smaller, at ten times the time.",
               .choices = {kCompressionNames.begin(), kCompressionNames.end()},
               .initial = "fast for PNG, none for TIFF"},
              [&recipe](const std::string& name) {
                recipe.compression = named_value<Compression>(name, kCompressionNames);
              });
}

void add_pictures(OptionList& options, Recipe& recipe) {
  options.add(
      {.names = "--pictures",
       .value = "LIST",
       .summary = "Pictures to write, of",
       .choices = picture_names(),
       .initial = "intensity,dolp,angle"},
      [&recipe](const std::string& list) { recipe.pictures = parse_pictures(list); },
      [&recipe] { recipe.pictures.clear(); });
  options.add({.names = "--dolp-white",
               .value = "N",
               .summary = "DoLP that pictures show at full brightness",
               .initial = "what one pixel in 100 of the frame exceeds, rounded up to a multiple "
                          "of 0.05"},
              number_into(recipe.dolp_white, 0.01, 1), [&recipe] { recipe.dolp_white.reset(); });
}

}  // namespace

void add_result_options(OptionList& options, Recipe& recipe) {
  add_planes(options, recipe);
  add_pictures(options, recipe);
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <span>
#include <string>
#include <variant>
#include <vector>

#include "command_line/transform/transform_options.h"

namespace kv::polarization {

/// The mean of the four samples, which is no plane of the library.
struct MeanPlane {};

/// One of the images that a frame becomes.
struct Result {
  std::variant<Plane, MeanPlane, PictureKind> what;
  std::string name;  ///< what stands for {plane} in names
  ImageFormat format;
  ImageKind kind;

  std::string_view ending() const { return ending_of(format, kind); }
};

/// What a frame becomes by that recipe, in the order of the lists.
std::vector<Result> results_of(const Recipe& recipe);

/// The arguments of a command line that make those results alone, which share a file: in their
/// usual order and without defaults, so that equal recipes give equal arguments.
std::vector<std::string> arguments_for(const Recipe& recipe, std::span<const Result> results);

}  // namespace kv::polarization

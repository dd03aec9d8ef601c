// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "kv/image_files/frame_reader.h"

namespace kv::polarization {

/// A shape of headerless frames that the size of a file would explain.
struct ShapeGuess {
  RawShape shape{};
  std::uint64_t frames = 0;
  double roughness = 0;  ///< of the first frame, read in this way
};

/// The shapes of common sensors in all packings that a file of that many bytes would hold whole
/// frames of: up to four, those that make the smoothest picture of its first frame first. Of
/// formats that give the same picture only the one whose bits its samples fill is among them. Empty
/// when none fits. Throws Fault for a file that cannot be read.
std::vector<ShapeGuess> guess_shapes(const std::filesystem::path& file);

/// The options that describe a shape.
std::string options_of(const RawShape& shape);

}  // namespace kv::polarization

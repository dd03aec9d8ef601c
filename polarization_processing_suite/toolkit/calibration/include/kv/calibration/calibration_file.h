// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>

#include "kv/calibration/calibration.h"

namespace kv::polarization {

// A calibration on disk: a JSON file NAME.json with everything but the maps, and beside it each
// map as NAME.MAP.npy, where MAP is black, gain, diattenuation, orientation, gain_error,
// diattenuation_error, orientation_error (float32) or bad (uint8). The JSON names them with their
// SHA-256, so that maps and values of different calibrations are never mixed up. numpy.load reads
// the maps; whoever changes one has to change its sum. Saving and loading take some 0.2 seconds a
// megapixel each, mostly for the sums.

/// Writes one, in place of one of the same name. All files are complete under temporary names
/// before any gets its own, the JSON last; if that fails half-way, maps that do not belong to the
/// JSON are found by their sums. What load_calibration() gives equals what was saved in every bit.
///
/// Throws Fault of kind argument for a calibration that check() refuses, texts that are not UTF-8,
/// and a name that does not end in .json; Fault of kind file when the files cannot be written.
void save_calibration(const Calibration& calibration, const std::filesystem::path& file);

/// Reads one and believes nothing of it: format and version, the type and range of every value,
/// names, sizes and sums of the maps, and all that check() looks at. Maps are read from the folder
/// of the JSON alone.
///
/// Throws Fault of kind file, whose line names the file, what is wrong, and what would be right.
Calibration load_calibration(const std::filesystem::path& file);

}  // namespace kv::polarization

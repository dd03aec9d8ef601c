// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <string>

#include "kv/calibration/calibration.h"

namespace kv::polarization {

/// A page of HTML that tells a person whether a calibration is good, and what it means for
/// measurements: the verdict and its findings, the frames, noise, the four classes of pixels, maps,
/// histograms, errors of DoLP and angle before and after.
///
/// It is complete in itself: it asks for no other file and runs no script. All texts of the
/// calibration are shown as they are, whatever they hold; those of more than 200 bytes are
/// shortened in their middle. It takes up to a megabyte and a half, whatever the size of the
/// sensor, and half a kilobyte for each frame and finding.
///
/// Numbers that are not finite are told to be unknown. Throws Fault of kind argument when width or
/// height is not even and above 0, or a map has another size than width * height. Takes some
/// 250 ms for 5 megapixels, and 12 bytes of memory a pixel.
std::string calibration_report(const Calibration& calibration);

/// Writes the page to a file. An earlier file of that name is replaced when all is written, and
/// stays when that fails. Throws Fault as above, and of kind file.
void save_calibration_report(const std::filesystem::path& path, const Calibration& calibration);

}  // namespace kv::polarization

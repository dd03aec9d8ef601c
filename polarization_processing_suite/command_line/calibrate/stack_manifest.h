// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "kv/calibration/calibration.h"

namespace kv::polarization {

/// A line of a manifest: a file of frames, and what they are of.
struct ManifestEntry {
  std::filesystem::path file;  ///< relative ones are taken from the manifest's folder
  std::string name;            ///< the file as it stands in the manifest
  FrameKind kind = FrameKind::polarized;
  double angle = 0;  ///< degrees, of polarized frames
};

/// Reads a manifest of comma-separated values: a line of names, in which stand file, kind and angle
/// in any order beside others, then a line for each file. Kinds are polarized, dark and flat; the
/// others than polarized need no angle. Texts may stand in double quotes; empty lines and those
/// that begin with # are left out. Throws Fault that names the line, what is wrong, and what would
/// be right.
std::vector<ManifestEntry> read_manifest(const std::filesystem::path& file);

}  // namespace kv::polarization

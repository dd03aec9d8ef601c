// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <filesystem>
#include <optional>

#include "kv/calibration/identify.h"
#include "kv/image_files/frame_reader.h"

namespace kv::polarization {

struct IdentifyOptions {
  std::array<std::filesystem::path, 2> files;  ///< the first frame of each is taken
  TurnedLight light{};
  std::optional<int> bit_depth{};
  std::optional<RawShape> raw_shape{};
};

/// Prints which mosaics two frames of turned light leave, and how sure that is. Returns an exit
/// status: failure where nothing can be told.
int run_identify(const IdentifyOptions& options);

}  // namespace kv::polarization

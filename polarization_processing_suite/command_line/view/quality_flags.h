// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "command_line/frames/frame_correction.h"
#include "kv/pictures/flags_picture.h"

namespace kv::polarization {

/// How a sheet shows each flag of kv/polarization/quality.h that such a frame can have.
std::vector<FlagStyle> flag_styles(const KnownFrame& known);

/// The flags of every pixel, those of the correction among them.
Buffer<std::uint8_t> quality_of(const KnownFrame& known);

/// Gives the flags of a pixel to all of its block, so that single ones are not lost when blocks
/// become pixels. Of below_noise, which scatters, a block has to have a half.
void spread_flags(std::span<std::uint8_t> flags, int width, int height, int block);

}  // namespace kv::polarization

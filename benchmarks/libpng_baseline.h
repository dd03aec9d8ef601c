// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>

#include "kv/image_files.h"

/// What programs do that leave PNG to libpng: at its fastest level that compresses, differences to
/// the left, and runs alone, which is the fastest of its settings for noise.
namespace libpng_baseline {

bool is_available();

/// Of 16 bits.
void write(const std::filesystem::path& path, const kv::polarization::GreyImage& image);

/// A grey image of 16 bits, into a frame of its size.
void read(const std::filesystem::path& path, kv::polarization::Frame& frame);

}  // namespace libpng_baseline

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "kv/image_files/pending_file.h"
#include "kv/polarization/buffer.h"

namespace kv::polarization {

/// A map as an NPY file (numpy.lib.format, version 1.0) of float32 or uint8, row by row. Both
/// return the SHA-256 of the whole file.
template <class Number>
std::string write_npy_map(PendingFile& file, const Buffer<Number>& map, int width, int height);

/// Only of that size. Throws Fault of kind file for any other file, before it asks for memory.
template <class Number>
std::string read_npy_map(const std::filesystem::path& path, int width, int height,
                         Buffer<Number>& map);

}  // namespace kv::polarization

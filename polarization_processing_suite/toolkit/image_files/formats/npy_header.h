// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/image_files/byte_source.h"

namespace kv::polarization {

/// What stands before the numbers of an array, as NumPy's format 1.0 to 3.0 defines it.
struct NpyHeader {
  std::string type;  ///< NumPy's name of the elements, such as "<u2": byte order, kind, bytes
  bool columns_first = false;
  std::vector<std::uint64_t> shape;
  std::uint64_t first_byte = 0;  ///< of the numbers
};

/// Throws Fault of kind file when the header is damaged, unsupported for a later version of it.
NpyHeader read_npy_header(ByteSource& source);

/// A header of version 1.0, padded so that the numbers begin at a multiple of 64 bytes.
std::string npy_header(std::string_view type, const std::vector<std::size_t>& shape);

}  // namespace kv::polarization

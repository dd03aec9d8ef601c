// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>

#include "kv/polarization/buffer.h"
#include "python/bindings/arrays.h"

namespace kv::polarization::python {

/// A byte a pixel, row by row, not 0 for the pixels that it names.
struct ByteMask {
  Buffer<std::uint8_t> bytes;
  int width = 0;
  int height = 0;
};

/// A copy of an array (rows, columns) of bool or uint8. Throws TypeError or ValueError, which call
/// it `what`, for anything else.
ByteMask byte_mask(const py::object& object, const std::string& what);

}  // namespace kv::polarization::python

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

#include "toolkit/calibration/correction/cell_source.h"

namespace kv::polarization {

struct CorrectedCell {
  CellOf<std::uint16_t> samples;
  std::uint8_t flags;
};

/// A cell whose samples reach `clip_level`, or that its block does not hold.
CorrectedCell correct_special(const CellRecord& cell, const CellOf<std::uint16_t>& samples,
                              std::uint16_t clip_level, bool rescue, const OutputScale& output);

}  // namespace kv::polarization

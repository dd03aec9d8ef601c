// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

#include "toolkit/api/library_call.h"
#include "toolkit/calibration/correction/correction_table.h"

namespace kv::polarization {

struct RowSettings {
  std::uint16_t clip_level;
  bool rescue;
  OutputScale output;
};

/// Where a whole frame's results go.
struct CorrectedRows {
  std::uint16_t* samples;
  std::uint8_t* flags;  ///< null when not wanted
};

/// Corrects the cells of rows `begin` to `end` of the table.
void correct_rows(const FramePart& frame, const CorrectionTable& table, const RowSettings& settings,
                  const CorrectedRows& corrected, int begin, int end);

}  // namespace kv::polarization

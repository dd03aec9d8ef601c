// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>

#include "command_line/frames/frame_correction.h"
#include "kv/pictures/contact_sheet.h"

namespace kv::polarization {

struct SheetSettings {
  int width = 1600;                  ///< pixels that the sheet may be wide
  std::optional<double> dolp_white;  ///< none for the frame's own
  std::string title;
};

struct FrameSheet {
  SheetLayout layout;
  Picture picture;
};

/// All pictures of a frame whose raw samples have that bit depth, and its quality flags.
FrameSheet sheet_of(const KnownFrame& known, int raw_bit_depth, const SheetSettings& settings);

}  // namespace kv::polarization

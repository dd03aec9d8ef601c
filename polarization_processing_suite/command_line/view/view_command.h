// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <optional>

#include "command_line/frames/frame_options.h"
#include "command_line/view/frame_sheet.h"

namespace kv::polarization {

struct ViewOptions {
  std::filesystem::path file;
  std::filesystem::path output;
  std::size_t page = 1;    ///< from 1 up
  bool overwrite = false;  ///< else an earlier file is left alone
  FrameSettings settings;
  SheetSettings sheet;  ///< its title is that of the frame
};

/// Writes one sheet with all pictures of a frame. Returns an exit status.
int run_view(const ViewOptions& options);

}  // namespace kv::polarization

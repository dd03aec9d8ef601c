// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>

#include "command_line/frames/frame_options.h"
#include "toolkit/calibration/known_frame.h"

namespace kv::polarization {

/// The calibration that the settings name, if they do. Throws as load_calibration does.
std::optional<Calibration> calibration_of(const FrameSettings& settings);

/// Frames as the settings have them: corrected by a calibration, if there is one.
class FrameCorrection {
 public:
  using BelowBlack = CalibratedFrames::BelowBlack;

  /// A frame is corrected on that many threads. The calibration may be none; settings and
  /// calibration must outlive the correction.
  FrameCorrection(const FrameSettings& settings, const std::optional<Calibration>& calibration,
                  BelowBlack below_black, int threads);

  /// What it returns lasts until the next call, and no longer than the frame. Throws as
  /// FrameCorrector does.
  KnownFrame of(const Frame& raw);

 private:
  const FrameSettings& settings_;
  std::optional<CalibratedFrames> calibrated_;
};

}  // namespace kv::polarization

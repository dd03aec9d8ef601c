// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/frames/frame_correction.h"

#include "kv/calibration/calibration_file.h"

namespace kv::polarization {
namespace {

/// The calibration's, but for what the user gave.
Mosaic mosaic_of(const FrameSettings& settings, const Calibration& calibration) {
  Mosaic mosaic = calibration.mosaic;
  if (settings.phase_given) mosaic.phase = settings.mosaic.phase;
  if (settings.origin_given) {
    mosaic.x_origin = settings.mosaic.x_origin;
    mosaic.y_origin = settings.mosaic.y_origin;
  }
  return mosaic;
}

}  // namespace

std::optional<Calibration> calibration_of(const FrameSettings& settings) {
  if (!settings.calibration) return std::nullopt;
  return load_calibration(*settings.calibration);
}

FrameCorrection::FrameCorrection(const FrameSettings& settings,
                                 const std::optional<Calibration>& calibration,
                                 BelowBlack below_black, int threads)
    : settings_(settings) {
  if (!calibration) return;
  calibrated_.emplace(*calibration, mosaic_of(settings, *calibration), below_black,
                      settings.samples.rescue, threads);
}

KnownFrame FrameCorrection::of(const Frame& raw) {
  return calibrated_ ? calibrated_->of(raw) : KnownFrame{raw, settings_.mosaic, settings_.samples};
}

}  // namespace kv::polarization

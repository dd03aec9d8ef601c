// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "command_line/options/common_options.h"
#include "kv/polarization/quality.h"

namespace kv::polarization {

/// How the frames of a command line are read, and how their samples are to be understood.
struct FrameSettings {
  Mosaic mosaic{};
  bool phase_given = false;   ///< else a calibration tells it
  bool origin_given = false;  ///< likewise
  std::optional<RawShape> raw_shape{};
  std::optional<int> bit_depth{};  ///< instead of the files' own
  std::optional<std::filesystem::path> calibration{};
  SampleSettings samples{};  ///< of raw frames; with a calibration, rescue alone counts
};

/// All options that make these settings.
class FrameOptions {
 public:
  explicit FrameOptions(OptionList& options);

  /// Throws UsageError for options that do not go together.
  FrameSettings value() const;

 private:
  const OptionList& options_;
  MosaicOptions mosaic_;
  RawShapeOptions raw_shape_;
  std::optional<int> bit_depth_;
  std::optional<std::filesystem::path> calibration_;
  std::optional<float> black_level_;
  std::optional<std::uint16_t> clip_level_;
  std::optional<SensorNoise> noise_;
};

}  // namespace kv::polarization

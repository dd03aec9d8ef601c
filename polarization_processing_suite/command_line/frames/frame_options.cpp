// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/frames/frame_options.h"

#include "command_line/options/values.h"

namespace kv::polarization {
namespace {

SensorNoise noise_of(const std::string& text) {
  const auto numbers = split_list(text);
  if (numbers.size() != 2) {
    throw BadValue("'" + text +
                   "' is not a gain and a read noise; write, for example, 0.39,2.5 for 0.39 counts "
                   "per electron and 2.5 electrons");
  }
  return {.gain = static_cast<float>(number_of(numbers[0], 1e-6, 1e6)),
          .read_noise = static_cast<float>(number_of(numbers[1], 0, 1e6))};
}

}  // namespace

FrameOptions::FrameOptions(OptionList& options)
    : options_(options), mosaic_(options), raw_shape_(options) {
  add_bit_depth(options, bit_depth_);
  options.add({.names = "--calibration",
               .value = "FILE",
               .summary = "Correct the frames by what kv-polarize calibrate found of their camera",
               .details = "It tells the mosaic, black levels, clip level, noise and bad pixels, so "
                          "that only what it cannot know is left to be given: --origin of frames "
                          "that are a region of the calibrated sensor.",
               .completion = Completion::file},
              path_into(calibration_), [this] { calibration_.reset(); });
  options.add({.names = "--black-level",
               .value = "N",
               .summary = "Counts of a sample in the dark; subtracted",
               .details = "A black level that is left in lowers every degree of polarization, the "
                          "more the darker the place.",
               .initial = "0"},
              number_into(black_level_, 0, 65535), [this] { black_level_.reset(); });
  options.add({.names = "--clip-level",
               .value = "N",
               .summary = "Sample from which on a pixel counts as clipped",
               .details = "In counts, black level included. Many sensors saturate below the "
                          "greatest sample.",
               .initial = "the greatest one"},
              whole_number_into(clip_level_, 1, 65535), [this] { clip_level_.reset(); });
  options.add(
      {.names = "--sensor-noise",
       .value = "GAIN,READ",
       .summary = "Counts per electron, and read noise in electrons; makes errors known",
       .details = "Both are on the camera's data sheet, or come from a photon transfer "
                  "measurement by EMVA 1288. The gain there may be told as electrons per "
                  "count: its inverse is wanted. A calibration knows the noise by itself."},
      [this](const std::string& text) { noise_ = noise_of(text); }, [this] { noise_.reset(); });
}

FrameSettings FrameOptions::value() const {
  if (calibration_ && (black_level_ || clip_level_ || noise_)) {
    throw UsageError(
        "--calibration tells black levels, clip level and noise, and excludes --black-level, "
        "--clip-level and --sensor-noise");
  }
  return {.mosaic = mosaic_.value(),
          .phase_given = options_.given("phase"),
          .origin_given = options_.given("origin"),
          .raw_shape = raw_shape_.value(),
          .bit_depth = bit_depth_,
          .calibration = calibration_,
          .samples = {
              .black_level = black_level_.value_or(0), .clip_level = clip_level_, .noise = noise_}};
}

}  // namespace kv::polarization

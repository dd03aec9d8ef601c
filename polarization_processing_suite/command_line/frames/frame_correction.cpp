#include "command_line/frames/frame_correction.h"

#include <algorithm>
#include <cmath>

#include "kv/calibration/calibration_file.h"

namespace kv::polarization {
namespace {

/// Six standard deviations of the noise in the dark, in counts of a corrected frame, as far as its
/// depth can grow.
std::uint16_t pedestal_of(const Calibration& calibration) {
  const double gain = std::ldexp(1.0, kCorrectedBitDepth - calibration.bit_depth);
  const double dark = gain * std::sqrt(calibration.noise.dark_variance());
  return static_cast<std::uint16_t>(std::min(std::ceil(6 * dark), 32767.0));
}

/// The same polarizers behind the frame's pixels, with the frame's first pixel as the sensor's.
Mosaic at_its_own_origin(const Mosaic& mosaic) {
  return {.phase = phase_at(cell_angles(mosaic)[0]).value()};
}

}  // namespace

std::optional<Calibration> calibration_of(const FrameSettings& settings) {
  if (!settings.calibration) return std::nullopt;
  return load_calibration(*settings.calibration);
}

FrameCorrection::FrameCorrection(const FrameSettings& settings,
                                 const std::optional<Calibration>& calibration,
                                 BelowBlack below_black, int threads)
    : settings_(settings), calibration_(calibration) {
  correction_.rescue = settings.samples.rescue;
  correction_.threads = threads;
  if (calibration && below_black == BelowBlack::kept) {
    correction_.pedestal = pedestal_of(*calibration);
  }
}

KnownFrame FrameCorrection::of(const Frame& raw) {
  if (!calibration_) return {raw, at_its_own_origin(settings_.mosaic), settings_.samples};
  Mosaic mosaic = calibration_->mosaic;
  if (settings_.phase_given) mosaic.phase = settings_.mosaic.phase;
  if (settings_.origin_given) {
    mosaic.x_origin = settings_.mosaic.x_origin;
    mosaic.y_origin = settings_.mosaic.y_origin;
  }
  return corrected(raw, mosaic);
}

KnownFrame FrameCorrection::corrected(const Frame& raw, const Mosaic& mosaic) {
  if (!corrector_ || corrected_.width != raw.width || corrected_.height != raw.height) {
    corrector_.emplace(*calibration_, mosaic, raw.width, raw.height, correction_);
  }
  flags_.resize(raw.samples.size());
  bad_.resize(raw.samples.size());
  corrector_->correct(raw, corrected_, flags_);
  std::ranges::transform(flags_, bad_.begin(), [](std::uint8_t flags) {
    return static_cast<std::uint8_t>(flags & quality::bad_pixel);
  });
  SampleSettings samples = corrector_->sample_settings();
  samples.bad_pixels = {bad_, raw.width, raw.height};
  return {corrected_, at_its_own_origin(mosaic), samples, flags_, corrector_->gained_bits()};
}

}  // namespace kv::polarization

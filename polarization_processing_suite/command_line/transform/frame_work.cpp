// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/transform/frame_work.h"

#include <algorithm>

#include "command_line/stopwatch.h"
#include "kv/polarization/mean_plane.h"

namespace kv::polarization {

FrameWork::FrameWork(const TransformContext& context)
    : context_(context),
      recipe_(context.options.recipe),
      processor_(static_cast<int>(context.threads)) {}

void FrameWork::compute(FrameReport& report) {
  if (recipe_.bit_depth) frame_.bit_depth = *recipe_.bit_depth;
  raw_bit_depth_ = frame_.bit_depth;
  check_samples(report);
  source_ = context_.calibration ? &corrected() : &frame_;
  compute_planes(report);
  if (recipe_.mean) {
    mean_.resize(source_->samples.size());
    fill_mean_plane(*source_, mean_);
  }
  if (!recipe_.pictures.empty()) compute_pictures();
}

void FrameWork::check_samples(FrameReport& report) const {
  const std::size_t excess = count_samples_above_full_scale(frame_);
  if (excess == 0) return;
  report.warnings.push_back(std::to_string(excess) + " samples are above " +
                            std::to_string(full_scale(frame_.bit_depth)) +
                            ", the largest value of " + std::to_string(frame_.bit_depth) +
                            " bits; check --bit-depth");
}

const Frame& FrameWork::corrected() {
  if (!corrector_ || corrected_.width != frame_.width || corrected_.height != frame_.height) {
    corrector_.emplace(*context_.calibration, context_.mosaic, frame_.width, frame_.height,
                       CorrectionSettings{.threads = static_cast<int>(context_.threads)});
  }
  corrector_->correct(frame_, corrected_);
  return corrected_;
}

void FrameWork::compute_planes(FrameReport& report) {
  const Frame& frame = *source_;
  planes_.reshape(frame.width, frame.height, recipe_.planes, recipe_.output_max);
  if (recipe_.planes.empty()) {
    check(frame);
    return;
  }
  if (!planes_touched_) touch_planes();
  Stopwatch stopwatch;
  processor_.transform(frame, context_.mosaic, planes_.views());
  report.transform_seconds = stopwatch.seconds();
  report.pixels = static_cast<double>(frame.samples.size());
  if (recipe_.planes.has(Plane::intensity)) {
    report.clipped_pixels = static_cast<double>(count_clipped_intensity(frame));
  }
}

/// The system clears fresh memory when it is first written: that is no time of the transform.
void FrameWork::touch_planes() {
  const PlaneViews views = planes_.views();
  std::ranges::fill(views.normalized_stokes, 0.0F);
  for (const PlaneTraits& traits : kPlanes) {
    if (traits.element == PlaneElement::level) {
      std::ranges::fill(views.level(traits.plane).levels, std::uint16_t{0});
    }
  }
  planes_touched_ = true;
}

void FrameWork::compute_pictures() {
  picture_source_.fill(processor_, *source_, context_.mosaic, planes_for(recipe_.pictures));
  ranges_ = ranges_of(picture_source_.maps());
  if (recipe_.dolp_white) ranges_.dolp_white = *recipe_.dolp_white;
}

}  // namespace kv::polarization

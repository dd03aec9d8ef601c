#include "toolkit/calibration/fit/stack_intake.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "kv/polarization/fault.h"
#include "toolkit/api/memory_checks.h"
#include "toolkit/api/packed_frame.h"
#include "toolkit/api/request_checks.h"
#include "toolkit/calibration/fit/fit_checks.h"

namespace kv::polarization {
namespace {

// Of a sensor that nobody told about.
constexpr double kFullWell = 10000;  // electrons at full scale
constexpr float kReadNoise = 2.5f;   // electrons

std::string size_of(int width, int height, int bit_depth) {
  return std::to_string(width) + " x " + std::to_string(height) + " pixels of " +
         std::to_string(bit_depth) + " bits";
}

}  // namespace

void StackIntake::begin(const FrameView& frame) {
  if (frame.width % 2 != 0 || frame.height % 2 != 0) {
    refuse("the frames have " + std::to_string(frame.width) + " x " + std::to_string(frame.height) +
           " pixels; width and height must be even");
  }
  sums_.emplace(frame.width, frame.height, settings_.mosaic);
  grid_ = {frame.width, frame.height, class_numbers(settings_.mosaic)};
  bit_depth_ = frame.bit_depth;
  clip_level_ = settings_.clip_level.value_or(static_cast<std::uint16_t>(full_scale(bit_depth_)));
  const auto gain = static_cast<float>(full_scale(bit_depth_) / kFullWell);
  noise_ = settings_.noise.value_or(SensorNoise{gain, kReadNoise});
}

void StackIntake::add(const FrameView& frame, const StackFrame& what, WorkerPool& pool) {
  check_mosaic_frame(frame);
  const bool has_angle =
      what.kind == FrameKind::polarized && (settings_.angles_known || polarized_ == 0);
  if (has_angle && !std::isfinite(what.angle)) {
    refuse("the polarizer's angle of " + what.name + " is no number; it must be one in degrees");
  }
  if (!sums_) begin(frame);
  StackEntry entry;
  entry.record.name = what.name;
  entry.record.kind = what.kind;
  entry.record.angle = has_angle ? what.angle : 0;
  if (frame.width != grid_.width || frame.height != grid_.height || frame.bit_depth != bit_depth_) {
    entry.record.refusal = "it has " + size_of(frame.width, frame.height, frame.bit_depth) +
                           "; the first frame has " +
                           size_of(grid_.width, grid_.height, bit_depth_);
    stack_.push_back(std::move(entry));
    return;
  }
  const FramePart part = packed(frame, settings_.mosaic, room_);
  entry.record.used = true;
  entry.means = tile_means(part, clip_level_, pool);
  entry.record.class_means = entry.means.classes;
  if (what.kind == FrameKind::dark && !dark_reference_) {
    dark_reference_ = entry.means.classes;
    black_guess_ = vector_of(entry.means.classes).mean();
  } else if (what.kind == FrameKind::polarized) {
    entry.terms = terms_of(entry.means);
    entry.half = next_half(entry.record.angle);
    ++polarized_;
  }
  sum(part, entry, 1, pool);
  entry.summed = true;
  stack_.push_back(std::move(entry));
}

FrameTerms StackIntake::terms_of(const TileMeans& means) {
  FrameTerms terms;
  terms.means = means.classes;
  const Eigen::Vector3d stokes = ideal_stokes(vector_of(means.classes));
  if (scale_ == 0) scale_ = std::max(1.0, stokes[0]);
  terms.regressors = {1, stokes[0] / scale_, stokes[1] / scale_, stokes[2] / scale_};
  // Only the weights' ratios matter; near 1 they keep the sums small.
  const double unit = noise_.variance(static_cast<float>(scale_ / 2));
  for (std::size_t number = 0; number < 4; ++number) {
    terms.weights[number] =
        unit / noise_.variance(static_cast<float>(means.classes[number] - black_guess_));
  }
  return terms;
}

/// In turns; frames of one angle in turns among themselves, so that both halves have all angles.
std::size_t StackIntake::next_half(double angle) const {
  for (auto entry = stack_.rbegin(); settings_.angles_known && entry != stack_.rend(); ++entry) {
    if (entry->is(FrameKind::polarized) &&
        std::abs(half_turn(entry->record.angle - angle)) < kSameAngle) {
      return 1 - entry->half;
    }
  }
  return polarized_ % 2;
}

void StackIntake::sum(const FramePart& frame, const StackEntry& entry, double sign,
                      WorkerPool& pool) {
  switch (entry.record.kind) {
    case FrameKind::polarized:
      sums_->add_polarized(frame, entry.terms, entry.half, clip_level_, sign, pool);
      break;
    case FrameKind::dark:
      sums_->add_dark(frame, *dark_reference_, sign, pool);
      break;
    case FrameKind::flat:
      sums_->add_flat(frame, entry.means.classes, sign, pool);
      break;
  }
}

void StackIntake::take_out_refused(const FrameAgain& again, WorkerPool& pool) {
  for (std::size_t index = 0; index < stack_.size(); ++index) {
    StackEntry& entry = stack_[index];
    if (entry.record.used || !entry.summed) continue;
    if (!again) {
      throw Fault(FaultKind::state, entry.record.name + " cannot be used (" + entry.record.refusal +
                                        ") and has to be read again to be taken out");
    }
    const FrameView frame = again(index);
    check_mosaic_frame(frame);
    const bool same_size = frame.width == grid_.width && frame.height == grid_.height;
    const FramePart part = same_size ? packed(frame, settings_.mosaic, room_) : FramePart{};
    if (!same_size || !(tile_means(part, clip_level_, pool) == entry.means)) {
      refuse(entry.record.name +
             " came with other samples when it was read again; it must be the "
             "same frame");
    }
    sum(part, entry, -1, pool);
    entry.summed = false;
  }
}

ClassValues StackIntake::black() const {
  if (!used_frames(stack_, FrameKind::dark).empty()) return mean_of(stack_, FrameKind::dark);
  const double level = settings_.black_level;
  return {level, level, level, level};
}

}  // namespace kv::polarization

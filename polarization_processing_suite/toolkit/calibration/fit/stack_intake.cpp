// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/fit/stack_intake.h"

#include <algorithm>
#include <utility>

#include "kv/polarization/fault.h"
#include "toolkit/api/memory_checks.h"
#include "toolkit/api/packed_frame.h"
#include "toolkit/api/request_checks.h"

namespace kv::polarization {
namespace {

std::string size_of(int width, int height, int bit_depth) {
  return std::to_string(width) + " x " + std::to_string(height) + " pixels of " +
         std::to_string(bit_depth) + " bits";
}

[[noreturn]] void refuse_twice(const StackEntry& entry) {
  refuse(entry.record.name + " came twice; each frame must be added to one part, once");
}

}  // namespace

void StackIntake::settle(const FitReference& reference) {
  reference_ = reference;
  grid_ = {reference.width, reference.height, class_numbers(settings_.mosaic)};
  clip_level_ = clip_level_of(settings_, reference.bit_depth);
}

StackIntake::StackIntake(std::shared_ptr<const PlannedStack> plan)
    : plan_(std::move(plan)), settings_(plan_->settings), stack_(entries_of(*plan_)) {
  settle(plan_->reference);
}

void StackIntake::add(const FrameView& frame, const StackFrame& what, WorkerPool& pool) {
  if (plan_) {
    throw Fault(FaultKind::state, "the fit has a plan; its frames must be added by their numbers");
  }
  check_mosaic_frame(frame);
  StackEntry entry = next_entry(stack_, what, reference_, settings_);
  if (stack_.empty()) settle(reference_of(frame));
  take_in(frame, stack_.size(), entry, pool);
  stack_.push_back(std::move(entry));
}

void StackIntake::add_planned(const FrameView& frame, std::size_t number, WorkerPool& pool) {
  if (!plan_) {
    throw Fault(FaultKind::state,
                "the fit has no plan; its frames must be added with what they are");
  }
  if (number >= stack_.size()) {
    refuse("there is no frame " + std::to_string(number) + "; the plan has frames 0 to " +
           std::to_string(stack_.size() - 1));
  }
  if (stack_[number].added) refuse_twice(stack_[number]);
  check_mosaic_frame(frame);
  StackEntry entry = stack_[number];
  if (reference_.fits(frame) && !reference_.knows(entry.record.kind)) {
    refuse(entry.record.name +
           " is not of the size and bit depth that it had when the plan was made; it must be the "
           "same frame");
  }
  take_in(frame, number, entry, pool);
  entry.added = true;
  stack_[number] = std::move(entry);
}

void StackIntake::merge(StackIntake& other, WorkerPool& pool) {
  if (&other == this) refuse("a part of a fit cannot be merged into itself; it must be another");
  if (!plan_ || !other.plan_ || !(*plan_ == *other.plan_)) {
    refuse("the parts are not of one fit; all must be made with the same plan");
  }
  for (std::size_t number = 0; number < stack_.size(); ++number) {
    if (stack_[number].added && other.stack_[number].added) refuse_twice(stack_[number]);
  }
  if (!sums_) {
    sums_ = std::move(other.sums_);
  } else if (other.sums_) {
    sums_->merge(*other.sums_, pool);
  }
  for (std::size_t number = 0; number < stack_.size(); ++number) {
    if (other.stack_[number].added) stack_[number] = std::move(other.stack_[number]);
  }
}

void StackIntake::require_all() const {
  const auto missing = std::count_if(stack_.begin(), stack_.end(),
                                     [](const StackEntry& entry) { return !entry.added; });
  if (missing == 0) return;
  const auto first = std::find_if(stack_.begin(), stack_.end(),
                                  [](const StackEntry& entry) { return !entry.added; });
  throw Fault(FaultKind::state,
              std::to_string(missing) + " of the " + std::to_string(stack_.size()) +
                  " frames of the plan are missing, the first being frame " +
                  std::to_string(first - stack_.begin()) + ", " + first->record.name +
                  "; add them, or merge the parts that "
                  "have them");
}

void StackIntake::restore(std::size_t number, TileMeans means) {
  keep(std::move(means), number, stack_[number]);
  stack_[number].added = true;
}

void StackIntake::restore_refused(std::size_t number, const std::string& refusal) {
  stack_[number].record.used = false;
  stack_[number].record.refusal = refusal;
  stack_[number].added = true;
}

PixelSums& StackIntake::restore_sums() {
  return sums_.emplace(grid_.width, grid_.height, settings_.mosaic);
}

void StackIntake::take_in(const FrameView& frame, std::size_t number, StackEntry& entry,
                          WorkerPool& pool) {
  if (!reference_.fits(frame)) {
    entry.record.used = false;
    entry.record.refusal = "it has " + size_of(frame.width, frame.height, frame.bit_depth) +
                           "; the first frame has " +
                           size_of(reference_.width, reference_.height, reference_.bit_depth);
    return;
  }
  if (!sums_) sums_.emplace(grid_.width, grid_.height, settings_.mosaic);
  const FramePart part = packed(frame, settings_.mosaic, room_);
  TileMeans means = tile_means(part, clip_level_, pool);
  reference_.learn(number, entry.record.kind, means.classes);
  keep(std::move(means), number, entry);
  sum(part, entry, 1, pool);
}

void StackIntake::keep(TileMeans means, std::size_t number, StackEntry& entry) const {
  entry.means = std::move(means);
  entry.record.used = true;
  entry.record.class_means = entry.means.classes;
  if (entry.record.kind == FrameKind::polarized) {
    entry.terms = terms_of(entry.means.classes, number, reference_, settings_);
  }
  entry.summed = true;
}

void StackIntake::sum(const FramePart& frame, const StackEntry& entry, double sign,
                      WorkerPool& pool) {
  switch (entry.record.kind) {
    case FrameKind::polarized:
      sums_->add_polarized(frame, entry.terms, entry.half, clip_level_, sign, pool);
      break;
    case FrameKind::dark:
      sums_->add_dark(frame, reference_.dark_means, sign, pool);
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

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/fit/planned_stack.h"

#include "toolkit/api/memory_checks.h"
#include "toolkit/api/packed_frame.h"
#include "toolkit/api/request_checks.h"
#include "toolkit/calibration/fit/byte_stream.h"
#include "toolkit/calibration/fit/fit_checks.h"

namespace kv::polarization {
namespace {

constexpr ByteHead kPlanHead = {{'K', 'V', 'F', 'I', 'T', 'P', 'L', '\n'}, 1};

// What the bytes say of each record, for a ByteWriter and a ByteReader, whose records are const and
// not.

template <class Bytes, class Noise>
void visit_noise(Bytes& bytes, Noise& noise) {
  bytes(noise.gain);
  bytes(noise.read_noise);
}

template <class Bytes, class Settings>
void visit_settings(Bytes& bytes, Settings& settings) {
  bytes(settings.mosaic.phase);
  bytes(settings.mosaic.x_origin);
  bytes(settings.mosaic.y_origin);
  bytes(settings.black_level);
  bytes(settings.clip_level);
  bytes(settings.source_dolp);
  bytes(settings.angles_known);
  bytes(settings.clipped_share);
}

template <class Bytes, class Reference>
void visit_reference(Bytes& bytes, Reference& reference) {
  bytes(reference.width);
  bytes(reference.height);
  bytes(reference.bit_depth);
  bytes(reference.polarized);
  bytes(reference.scale);
  bytes(reference.dark);
  bytes(reference.dark_means);
}

template <class Bytes, class Frame>
void visit_frame(Bytes& bytes, Frame& frame) {
  bytes(frame.kind);
  bytes(frame.angle);
  bytes(frame.name);
}

std::vector<std::byte> bytes_of(const PlannedStack& plan) {
  ByteWriter bytes;
  put_head(bytes, kPlanHead);
  visit_settings(bytes, plan.settings);
  bytes(plan.settings.noise.has_value());
  if (plan.settings.noise) visit_noise(bytes, *plan.settings.noise);
  visit_reference(bytes, plan.reference);
  bytes(std::uint64_t{plan.frames.size()});
  for (const StackFrame& frame : plan.frames) visit_frame(bytes, frame);
  return std::move(bytes.bytes());
}

/// Whether a frame of that number can be the first of its kind; none is always possible.
bool is_of_kind(const PlannedStack& plan, std::uint64_t number, FrameKind kind) {
  return number == FitReference::kNone ||
         (number < plan.frames.size() && plan.frames[number].kind == kind);
}

bool can_be(const PlannedStack& plan) {
  const FitReference& reference = plan.reference;
  constexpr double most = 65535;  // counts
  const auto is_side = [](int side) { return side >= 2 && side <= 1 << 20 && side % 2 == 0; };
  bool fine = is_side(reference.width) && is_side(reference.height) && reference.bit_depth >= 1 &&
              reference.bit_depth <= 16 &&
              is_of_kind(plan, reference.polarized, FrameKind::polarized) &&
              is_of_kind(plan, reference.dark, FrameKind::dark);
  if (reference.polarized != FitReference::kNone) {
    fine = fine && reference.scale >= 1 && reference.scale <= 2 * most;
  }
  for (const double mean : reference.dark_means) fine = fine && mean >= 0 && mean <= most;
  for (const StackFrame& frame : plan.frames) fine = fine && frame.kind <= FrameKind::flat;
  return fine && !plan.frames.empty();
}

}  // namespace

PlannedStack plan_stack(const FitSettings& settings, const std::vector<StackFrame>& frames,
                        const FrameAgain& read) {
  check(settings);
  if (frames.empty()) refuse("the stack has no frames; it must have some to be planned");
  if (!read) refuse("the plan cannot read frames; it must be given a function that reads them");
  PlannedStack plan{settings, frames, {}, {}};
  plan.settings.threads = 0;
  WorkerPool pool(WorkerPool::threads_of(settings.threads));
  Buffer<std::uint16_t> room;
  for (std::size_t number = 0; number < frames.size(); ++number) {
    if (number > 0 && plan.reference.knows(frames[number].kind)) continue;
    const FrameView frame = read(number);
    check_mosaic_frame(frame);
    if (number == 0) plan.reference = reference_of(frame);
    if (!plan.reference.fits(frame)) continue;
    const int clip_level = clip_level_of(settings, frame.bit_depth);
    const TileMeans means = tile_means(packed(frame, settings.mosaic, room), clip_level, pool);
    plan.reference.learn(number, frames[number].kind, means.classes);
  }
  entries_of(plan);  // throws for angles that are no numbers
  plan.bytes = bytes_of(plan);
  return plan;
}

PlannedStack planned_stack_of(std::span<const std::byte> bytes) {
  ByteReader reader(bytes, "the plan of a fit");
  check_head(reader, kPlanHead);
  PlannedStack plan;
  visit_settings(reader, plan.settings);
  bool has_noise = false;
  reader(has_noise);
  if (has_noise) visit_noise(reader, plan.settings.noise.emplace());
  visit_reference(reader, plan.reference);
  std::uint64_t count = 0;
  reader(count);
  // Frames are read one by one, as the count may be any number.
  for (; count > 0; --count) visit_frame(reader, plan.frames.emplace_back());
  reader.require_end();
  reader.require(can_be(plan));
  check(plan.settings);
  entries_of(plan);
  plan.bytes.assign(bytes.begin(), bytes.end());
  return plan;
}

Stack entries_of(const PlannedStack& plan) {
  Stack stack;
  for (const StackFrame& frame : plan.frames) {
    StackEntry entry = next_entry(stack, frame, plan.reference, plan.settings);
    // Those before the reference are of another size, and count in neither half.
    entry.record.used = stack.size() >= plan.reference.polarized;
    entry.added = false;
    stack.push_back(std::move(entry));
  }
  return stack;
}

}  // namespace kv::polarization

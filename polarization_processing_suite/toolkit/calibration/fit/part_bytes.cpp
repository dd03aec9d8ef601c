// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/fit/part_bytes.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "toolkit/calibration/fit/byte_stream.h"

namespace kv::polarization {
namespace {

constexpr ByteHead kPartHead = {{'K', 'V', 'F', 'I', 'T', 'P', 'T', '\n'}, 1};
constexpr double kMost = 65535;  // counts

std::size_t size_of_sums(const StackIntake& part) {
  return part.has_sums() ? part.grid().pixels() * PixelSums::kBytesPerPixel : 0;
}

void put_entry(ByteWriter& bytes, const StackEntry& entry) {
  bytes(entry.summed);
  if (!entry.summed) {
    bytes(entry.record.refusal);
    return;
  }
  bytes(entry.means.classes);
  bytes(entry.means.clipped_share);
  for (const ClassValues& tile : entry.means.tiles) bytes(tile);
}

/// All but the sums.
std::vector<std::byte> front_of(const StackIntake& part) {
  ByteWriter bytes;
  bytes.blob(part.plan()->bytes);
  const Stack& stack = part.stack();
  bytes(std::uint64_t(std::count_if(stack.begin(), stack.end(),
                                    [](const StackEntry& entry) { return entry.added; })));
  for (std::size_t number = 0; number < stack.size(); ++number) {
    if (!stack[number].added) continue;
    bytes(std::uint64_t{number});
    put_entry(bytes, stack[number]);
  }
  bytes(part.has_sums());

  ByteWriter front;
  put_head(front, kPartHead);
  const std::size_t before = front.bytes().size() + sizeof(std::uint64_t);
  front(std::uint64_t{before + bytes.bytes().size() + size_of_sums(part)});
  front.bytes().insert(front.bytes().end(), bytes.bytes().begin(), bytes.bytes().end());
  return std::move(front.bytes());
}

bool are_means(const ClassValues& means) {
  return std::all_of(means.begin(), means.end(),
                     [](double mean) { return mean >= 0 && mean <= kMost; });
}

void take_entry(ByteReader& bytes, StackIntake& part) {
  std::uint64_t number = 0;
  bytes(number);
  bytes.require(number < part.stack().size());
  const auto index = static_cast<std::size_t>(number);
  bytes.require(!part.stack()[index].added);
  bool summed = false;
  bytes(summed);
  if (!summed) {
    std::string refusal;
    bytes(refusal);
    part.restore_refused(index, refusal);
    return;
  }
  bytes.require(part.reference().knows(part.stack()[index].record.kind));
  TileMeans means;
  bytes(means.classes);
  bytes(means.clipped_share);
  bool fine = are_means(means.classes) && means.clipped_share >= 0 && means.clipped_share <= 1;
  means.tiles.resize(tile_count(part.grid().width, part.grid().height));
  for (ClassValues& tile : means.tiles) {
    bytes(tile);
    fine = fine && are_means(tile);
  }
  bytes.require(fine);
  part.restore(index, std::move(means));
}

/// What the sums of those frames can be: no sample is farther from a mean than the greatest one.
PixelSums::Limits limits_of(const Stack& stack) {
  constexpr double slack = 1.01;  // for the rounding of the sums
  const auto grow = [](float& limit, double by) { limit += static_cast<float>(slack * by); };
  PixelSums::Limits limits;
  auto& floats = limits.floats;
  for (const StackEntry& entry : stack) {
    if (!entry.summed) continue;
    if (entry.record.kind == FrameKind::polarized) {
      const std::size_t first = entry.half * (PixelSums::kMoments + 1);
      const FrameTerms& terms = entry.terms;
      const double weight = *std::max_element(terms.weights.begin(), terms.weights.end());
      for (std::size_t i = 0; i < PixelSums::kMoments; ++i) {
        grow(floats[first + i], weight * std::abs(terms.regressors[i]) * kMost);
      }
      grow(floats[first + PixelSums::kMoments], weight * kMost * kMost);
      limits.clipped = std::min(255, limits.clipped + 1);
    } else if (entry.record.kind == FrameKind::dark) {
      grow(floats[PixelSums::kFloats - 3], kMost);
      grow(floats[PixelSums::kFloats - 2], kMost * kMost);
    } else {
      grow(floats[PixelSums::kFloats - 1], kMost);
    }
  }
  return limits;
}

}  // namespace

std::size_t part_size(const StackIntake& part) {
  return front_of(part).size() + size_of_sums(part);
}

void write_part(const StackIntake& part, std::span<std::byte> memory, WorkerPool& pool) {
  const std::vector<std::byte> front = front_of(part);
  const std::size_t size = front.size() + size_of_sums(part);
  if (memory.size() != size) {
    refuse("the part takes " + std::to_string(size) + " bytes, but its memory has " +
           std::to_string(memory.size()) + "; it must have as many");
  }
  std::memcpy(memory.data(), front.data(), front.size());
  if (part.has_sums()) part.sums().write(memory.data() + front.size(), pool);
}

StackIntake part_of(std::span<const std::byte> bytes, WorkerPool& pool) {
  ByteReader reader(bytes, "a part of a fit");
  check_head(reader, kPartHead);
  std::uint64_t size = 0;
  reader(size);
  if (size != bytes.size()) {
    reader.fail("they are " + std::to_string(bytes.size()) + ", not " + std::to_string(size));
  }
  StackIntake part(std::make_shared<const PlannedStack>(planned_stack_of(reader.blob())));
  std::uint64_t count = 0;
  reader(count);
  for (; count > 0; --count) take_entry(reader, part);
  bool has_sums = false;
  reader(has_sums);
  const bool summed = std::any_of(part.stack().begin(), part.stack().end(),
                                  [](const StackEntry& entry) { return entry.summed; });
  reader.require(has_sums == summed);
  // Compared in this way, a plan that claims any size asks for no memory.
  const std::size_t left = reader.left();
  reader.require(has_sums ? left % PixelSums::kBytesPerPixel == 0 &&
                                left / PixelSums::kBytesPerPixel == part.grid().pixels()
                          : left == 0);
  if (has_sums) {
    const PixelSums::Limits limits = limits_of(part.stack());
    reader.require(part.restore_sums().read(reader.take(left).data(), limits, pool));
  }
  return part;
}

}  // namespace kv::polarization

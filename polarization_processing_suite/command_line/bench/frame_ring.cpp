// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/bench/frame_ring.h"

#include <algorithm>

namespace kv::polarization {
namespace {

/// Eight times the largest cache that a core of most servers reaches, 32 MB.
constexpr std::size_t kRingBytes = std::size_t{256} << 20;
constexpr std::size_t kFewestSlots = 4;
constexpr std::size_t kMostSlots = 4096;

std::size_t slots_for(const Frame& frame, OutputSet planes) {
  std::size_t bytes_a_pixel = sizeof(std::uint16_t);
  for (const PlaneTraits& traits : kPlanes) {
    if (!planes.has(traits.plane)) continue;
    bytes_a_pixel += traits.element == PlaneElement::level ? 2 : 8;
  }
  return std::clamp(kRingBytes / (bytes_a_pixel * frame.samples.size()), kFewestSlots, kMostSlots);
}

void touch(Planes& planes) {
  const PlaneViews views = planes.views();
  std::ranges::fill(views.normalized_stokes, 0.0F);
  for (const PlaneTraits& traits : kPlanes) {
    if (traits.element == PlaneElement::level) {
      std::ranges::fill(views.level(traits.plane).levels, std::uint16_t{0});
    }
  }
}

}  // namespace

FrameRing::FrameRing(const Frame& frame, OutputSet planes) : slots_(slots_for(frame, planes)) {
  for (FrameSlot& slot : slots_) {
    slot.frame = frame;
    slot.planes.reshape(frame.width, frame.height, planes);
    touch(slot.planes);
  }
}

FrameSlot& FrameRing::next() {
  FrameSlot& slot = slots_[next_];
  next_ = (next_ + 1) % slots_.size();
  return slot;
}

}  // namespace kv::polarization

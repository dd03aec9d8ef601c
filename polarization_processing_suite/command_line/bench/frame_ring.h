// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <vector>

#include "kv/polarization/frame.h"
#include "kv/polarization/planes.h"

namespace kv::polarization {

/// A frame with its planes.
struct FrameSlot {
  Frame frame;
  Planes planes;
};

/// Frames with their planes, taken in turn: more than caches hold, as a camera's driver hands them
/// over.
class FrameRing {
 public:
  /// Copies of one frame. All memory is written to, so that no call pays for fresh memory.
  FrameRing(const Frame& frame, OutputSet planes);

  FrameSlot& next();
  FrameSlot& first() { return slots_.front(); }
  std::size_t size() const { return slots_.size(); }

 private:
  std::vector<FrameSlot> slots_;
  std::size_t next_ = 0;
};

}  // namespace kv::polarization

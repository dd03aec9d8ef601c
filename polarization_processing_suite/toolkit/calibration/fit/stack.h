// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <vector>

#include "kv/calibration/calibration.h"
#include "toolkit/calibration/fit/class_light.h"
#include "toolkit/calibration/fit/pixel_sums.h"
#include "toolkit/calibration/fit/tile_means.h"

namespace kv::polarization {

/// What is kept of a frame of the stack.
struct StackEntry {
  FrameRecord record;  ///< used while nothing speaks against it
  TileMeans means;     ///< empty for a frame of a wrong size
  FrameTerms terms;    ///< of a polarized frame
  std::size_t half = 0;
  bool summed = false;  ///< whether it is in the sums of the pixels
  bool added = true;    ///< false for a planned frame that has not come

  bool is(FrameKind kind) const { return record.used && record.kind == kind; }
};

using Stack = std::vector<StackEntry>;

/// Means of the used frames of that kind; zeros without one.
ClassValues mean_of(const Stack& stack, FrameKind kind);

/// Indices of the used frames of that kind.
std::vector<std::size_t> used_frames(const Stack& stack, FrameKind kind);

/// Of the polarized frames that are used, in order.
std::vector<ClassLight> class_lights(const Stack& stack, const ClassValues& black);

struct FrameLimits {
  ClassValues black;     ///< counts
  double range = 65535;  ///< counts, from black to the clip level
  double clipped_share = 0;
};

/// Marks the frames as not used that are clipped, too dark, dark ones with light, or whose light is
/// spread over the frame otherwise than in the others. Fills the levels of the records.
void check_frames(Stack& stack, const FrameLimits& limits);

/// Marks the polarized frames as not used whose light is not that of their angle, or not as
/// polarized as the others'. Returns whether there were any.
bool check_angles(Stack& stack, const ClassValues& black);

/// Rms deviation of a frame's tile means from what its class means tell, by the other frames, as a
/// share of its level; for each of the used polarized frames in order. Empty for fewer than 5.
std::vector<double> tile_deviations(const Stack& stack, const ClassValues& black);

}  // namespace kv::polarization

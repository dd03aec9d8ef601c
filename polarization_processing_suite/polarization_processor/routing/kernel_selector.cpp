// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "polarization_processor/routing/kernel_selector.h"

#include "polarization_processor/traversal/frame_walk.h"

namespace kv {

void select_kernel(const TransformRequest& request, const PhaseView& view, bool sse41_available) {
  const KernelAxes axes = kernel_axes_of(request, sse41_available);
  walk_frame(request, view, frame_kernel(axes, axes.sse41 ? kSse41Blocks : kSse2Blocks));
}

}  // namespace kv

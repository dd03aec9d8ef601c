// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "vector_modules/module_transform.h"

#include "polarization_processor/traversal/frame_walk.h"
#include "vector_modules/module_blocks.h"

namespace kv {

void module_transform(const TransformRequest& request, const PhaseView& view,
                      bool sse41_available) {
  const KernelAxes axes = kernel_axes_of(request, sse41_available);
  // The SSE2 form, with its own fourth column, is for processors that would not load this module;
  // its planes are right all the same.
  walk_frame(request, view, frame_kernel(axes, axes.sse41 ? kModuleBlocks : kSse2Blocks));
}

}  // namespace kv

#include "vector_modules/module_transform.h"

#include "polarization_processor/traversal/frame_walk.h"
#include "vector_modules/module_blocks.h"

namespace kv {

void module_transform(const TransformRequest& request, const PhaseView& view,
                      bool sse41_available) {
  const KernelAxes axes = kernel_axes_of(request, sse41_available);
  KernelSteps steps = kernel_steps_of(axes);
  // The SSE2 form, with its own fourth column, is for processors that would not load this module;
  // its planes are right all the same.
  if (axes.sse41)
    steps.run_blocks = kModuleBlocks.by_variant[block_variant_index({axes.encoding, axes.phase})];
  walk_frame(request, view, steps);
}

}  // namespace kv

#include "polarization_processor/routing/kernel_selector.h"

#include "polarization_processor/traversal/frame_kernels.h"

namespace kv {

void select_kernel(const TransformRequest& request, const PhaseView& view, bool sse41_available) {
  frame_kernel_at(kernel_axes_of(request, sse41_available))(request, view);
}

}  // namespace kv

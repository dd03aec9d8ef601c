#include "traversal/frame_walk.h"

namespace kv {

void walk_frame(const TransformRequest& request, const PhaseView& view, const KernelSteps& steps) {
  const PlaneFrame planes(request);
  const std::uint64_t height = static_cast<std::uint64_t>(request.height);

  std::uint64_t row = 0;
  if (height != 2) {
    do {
      steps.finish_row_pair(request, view, planes, row, 0);
      row += 2;
    } while (row < height - 2);
  }
  steps.walk_last_rows(request, view, planes, row);
}

}  // namespace kv

#include "polarization_processor/traversal/frame_kernels.h"

#include <array>
#include <utility>

#include "polarization_processor/traversal/frame_walk.h"

namespace kv {
namespace {

template <KernelAxes axes>
void frame_kernel(const TransformRequest& request, const PhaseView& view) {
  walk_frame(request, view, kernel_steps_of(axes));
}

template <std::size_t... index>
constexpr std::array<FrameKernel, kKernelCount> kernel_table(std::index_sequence<index...>) {
  return {&frame_kernel<kernel_axes_at(index)>...};
}

constexpr auto kKernels = kernel_table(std::make_index_sequence<kKernelCount>());

}  // namespace

FrameKernel frame_kernel_at(const KernelAxes& axes) { return kKernels[kernel_index(axes)]; }

}  // namespace kv

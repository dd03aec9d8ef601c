#include "traversal/frame_kernels.h"

#include <array>
#include <utility>

#include "traversal/frame_walk.h"

namespace kv {
namespace {

template <KernelAxes axes>
void frame_kernel(const TransformRequest& request, const PhaseView& view) {
  constexpr std::size_t block = block_variant_index({axes.encoding, axes.phase});
  walk_frame(request, view,
             {.prepare = &prepare_block_constants<axes.encoding>,
              .run_blocks = axes.sse41 ? kSse41Blocks[block] : kSse2Blocks[block],
              .finish_row_pair = &finish_row_pair<axes.encoding, axes.even_width>,
              .walk_last_rows = &walk_last_rows<axes.encoding, axes.even_height, axes.even_width>});
}

template <std::size_t... index>
constexpr std::array<FrameKernel, kKernelCount> kernel_table(std::index_sequence<index...>) {
  return {&frame_kernel<kernel_axes_at(index)>...};
}

constexpr auto kKernels = kernel_table(std::make_index_sequence<kKernelCount>());

}  // namespace

FrameKernel frame_kernel_at(const KernelAxes& axes) { return kKernels[kernel_index(axes)]; }

}  // namespace kv

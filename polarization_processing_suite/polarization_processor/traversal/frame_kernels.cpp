#include "traversal/frame_kernels.h"

#include <array>
#include <utility>

#include "traversal/frame_walk.h"

namespace kv {
namespace {

template <EncodingAxes encoding, bool even_height, bool even_width>
void frame_kernel(const TransformRequest& request, const PhaseView& view) {
  walk_frame(request, view,
             {.finish_row_pair = &finish_row_pair<encoding, even_width>,
              .walk_last_rows = &walk_last_rows<encoding, even_height, even_width>});
}

/// The kernels of one encoding, at 2 * even_height + even_width.
using ParityKernels = std::array<FrameKernel, 4>;

template <std::size_t... index>
constexpr auto kernel_table(std::index_sequence<index...>) {
  return std::array{ParityKernels{&frame_kernel<kEncodings[index], false, false>,
                                  &frame_kernel<kEncodings[index], false, true>,
                                  &frame_kernel<kEncodings[index], true, false>,
                                  &frame_kernel<kEncodings[index], true, true>}...};
}

constexpr auto kKernels = kernel_table(std::make_index_sequence<kEncodingCount>());

}  // namespace

FrameKernel frame_kernel_at(const KernelAxes& axes) {
  const ParityKernels& kernels = kKernels[encoding_index(axes.encoding)];
  return kernels[(axes.even_height ? 2u : 0u) + (axes.even_width ? 1u : 0u)];
}

}  // namespace kv

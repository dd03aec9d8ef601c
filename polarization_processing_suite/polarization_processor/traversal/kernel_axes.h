#pragma once

#include <cstddef>
#include <cstdint>

#include "polarization_processor/records/transform_request.h"
#include "polarization_processor/vector/block_axes.h"

namespace kv {

/// Everything that can vary from frame to frame, and so tells one frame kernel from another.
struct KernelAxes {
  std::uint32_t phase = 0;  ///< 0 to 3: the top-left pixel lies behind 0, 45, 90, 135 degrees.
  EncodingAxes encoding;
  bool even_height = false;
  bool even_width = false;
  bool sse41 = false;

  constexpr bool operator==(const KernelAxes&) const = default;
};

KernelAxes kernel_axes_of(const TransformRequest& request, bool sse41_available);

/// The family: each variant of the vector block, for both parities of height and of width, in the
/// SSE2 and the SSE4.1 form.
inline constexpr std::size_t kKernelCount = kBlockVariantCount * 8;

constexpr KernelAxes kernel_axes_at(std::size_t index) {
  const BlockAxes& block = kBlockVariants[index / 8];
  return {.phase = block.phase,
          .encoding = block.encoding,
          .even_height = (index & 4) != 0,
          .even_width = (index & 2) != 0,
          .sse41 = (index & 1) != 0};
}

constexpr std::size_t kernel_index(const KernelAxes& axes) {
  return block_variant_index({axes.encoding, axes.phase}) * 8 + (axes.even_height ? 4 : 0) +
         (axes.even_width ? 2 : 0) + (axes.sse41 ? 1 : 0);
}

static_assert(
    [] {
      for (std::size_t index = 0; index < kKernelCount; ++index) {
        if (kernel_index(kernel_axes_at(index)) != index) return false;
      }
      return true;
    }(),
    "each member of the family has its own index");

}  // namespace kv

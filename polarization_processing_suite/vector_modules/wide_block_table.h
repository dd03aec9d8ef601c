#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "polarization_processor/vector/flatten.h"
#include "polarization_processor/vector/wide_blocks.h"

namespace kv {

/// All of a row pair's blocks by one instruction set. What is left over of the last full step is
/// done by a step that overlaps it: it writes the same values again. Fewer blocks than one step
/// takes go to the library's own form.
template <class Simd, BlockAxes axes>
KV_FLATTEN void run_wide_blocks(const TransformRequest& request, const BlockConstants& constants,
                                std::uint64_t count, BlockPosition position) {
  if (count < Simd::kBlocks) {
    constexpr std::size_t variant = block_variant_index(axes);
    kSse41Blocks.by_variant[variant](request, constants, count, position);
    return;
  }
  const WideBlocks<Simd, axes> blocks(request, constants);
  for (std::uint64_t done = Simd::kBlocks;; done += Simd::kBlocks) {
    blocks.evaluate(position);
    if (done >= count) return;
    const std::uint64_t left = count - done;
    advance(position, left < Simd::kBlocks ? left : Simd::kBlocks);
  }
}

template <class Simd, std::size_t... index>
constexpr BlockTable wide_table(std::index_sequence<index...>) {
  return {{&run_wide_blocks<Simd, kBlockVariants[index]>...}};
}

template <class Simd>
constexpr BlockTable wide_table() {
  return wide_table<Simd>(std::make_index_sequence<kBlockVariantCount>());
}

}  // namespace kv

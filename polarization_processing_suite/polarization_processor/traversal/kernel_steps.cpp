#include "polarization_processor/traversal/kernel_steps.h"

#include <array>
#include <cstddef>
#include <utility>

namespace kv {
namespace {

/// The steps of one encoding. Arrays by parity: odd, even.
struct EncodingSteps {
  BlockConstants (*prepare)(const TransformRequest& request);
  std::array<RowPairEnd, 2> finish_row_pair;         ///< By width.
  std::array<LastRowsWalker, 2> walk_last_row;       ///< By width.
  std::array<LastRowsWalker, 2> walk_last_two_rows;  ///< By width.
};

template <EncodingAxes encoding>
constexpr EncodingSteps encoding_steps() {
  return {&prepare_block_constants<encoding>,
          {&finish_row_pair<encoding, false>, &finish_row_pair<encoding, true>},
          {&walk_last_row<encoding, false>, &walk_last_row<encoding, true>},
          {&walk_last_two_rows<encoding, false>, &walk_last_two_rows<encoding, true>}};
}

template <std::size_t... index>
constexpr std::array<EncodingSteps, kEncodingCount> steps_table(std::index_sequence<index...>) {
  return {encoding_steps<kEncodings[index]>()...};
}

constexpr auto kEncodingSteps = steps_table(std::make_index_sequence<kEncodingCount>());

}  // namespace

KernelSteps kernel_steps_of(const KernelAxes& axes) {
  const EncodingSteps& steps = kEncodingSteps[encoding_index(axes.encoding)];
  const auto& walkers = axes.even_height ? steps.walk_last_two_rows : steps.walk_last_row;
  const BlockTable& blocks = axes.sse41 ? kSse41Blocks : kSse2Blocks;
  const std::size_t even_width = axes.even_width ? 1 : 0;
  return {.prepare = steps.prepare,
          .run_blocks = blocks.by_variant[block_variant_index({axes.encoding, axes.phase})],
          .finish_row_pair = steps.finish_row_pair[even_width],
          .walk_last_rows = walkers[even_width]};
}

}  // namespace kv

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "polarization_processor/traversal/frame_kernel.h"

#include <array>
#include <cstddef>
#include <utility>

#include "polarization_processor/traversal/last_rows_walker.h"
#include "polarization_processor/traversal/row_pair_end.h"

namespace kv {
namespace {

/// The steps of one encoding. Arrays by parity: odd, even.
struct EncodingSteps {
  BlockConstants (*prepare)(const TransformRequest& request);
  std::array<FinishRowPair, 2> finish_row_pair;               ///< By width.
  std::array<std::array<WalkLastRows, 2>, 2> walk_last_rows;  ///< By height, by width.
};

template <EncodingAxes encoding>
constexpr EncodingSteps encoding_steps() {
  return {&prepare_block_constants<encoding>,
          {&finish_row_pair<encoding, false>, &finish_row_pair<encoding, true>},
          {{{&walk_last_row<encoding, false>, &walk_last_row<encoding, true>},
            {&walk_last_two_rows<encoding, false>, &walk_last_two_rows<encoding, true>}}}};
}

constexpr auto kEncodingSteps = []<std::size_t... index>(std::index_sequence<index...>) {
  return std::array<EncodingSteps, kEncodingCount>{encoding_steps<kEncodings[index]>()...};
}
(std::make_index_sequence<kEncodingCount>());

}  // namespace

FrameKernel frame_kernel(const KernelAxes& axes, const BlockTable& blocks) {
  const EncodingSteps& steps = kEncodingSteps[encoding_index(axes.encoding)];
  const std::size_t even_height = axes.even_height ? 1 : 0;
  const std::size_t even_width = axes.even_width ? 1 : 0;
  return {.prepare = steps.prepare,
          .run_blocks = blocks.at(axes.encoding, axes.phase),
          .finish_row_pair = steps.finish_row_pair[even_width],
          .walk_last_rows = steps.walk_last_rows[even_height][even_width]};
}

}  // namespace kv

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <utility>

#include "polarization_processor/vector/blocks.h"

namespace kv {

enum class Wanted { all, scheduled, others };

constexpr bool is_wanted(Wanted wanted, const EncodingAxes& encoding) {
  return wanted == Wanted::all || (wanted == Wanted::scheduled) == is_scheduled(encoding);
}

/// The blocks of one encoding by phase, null where they are not wanted.
template <class Form, Wanted wanted, EncodingAxes encoding>
constexpr std::array<RunBlocks, kPhaseCount> blocks_by_phase() {
  if constexpr (is_wanted(wanted, encoding)) {
    return {
        &Form::template run<block_axes(encoding, 0)>, &Form::template run<block_axes(encoding, 1)>,
        &Form::template run<block_axes(encoding, 2)>, &Form::template run<block_axes(encoding, 3)>};
  } else {
    return {};
  }
}

/// The wanted blocks of a form, of which `Form::run<axes>` is a RunBlocks.
template <class Form, Wanted wanted>
constexpr BlockEntries block_entries() {
  return []<std::size_t... index>(std::index_sequence<index...>) {
    return BlockEntries{blocks_by_phase<Form, wanted, kEncodings[index]>()...};
  }
  (std::make_index_sequence<kEncodingCount>());
}

}  // namespace kv

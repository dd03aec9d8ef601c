#pragma once

#include <cstddef>
#include <utility>

#include "polarization_processor/vector/blocks.h"

namespace kv {

/// The table of a form: `Form::run<axes>` is its RunBlocks. A form lives in an unnamed namespace of
/// its file, and so does all that is made of it.
template <class Form, std::size_t... index>
constexpr BlockTable make_block_table(std::index_sequence<index...>) {
  BlockTable table{};
  ((table.entries[index / kPhaseCount][index % kPhaseCount] =
        &Form::template run<block_axes(kEncodings[index / kPhaseCount], index % kPhaseCount)>),
   ...);
  return table;
}

template <class Form>
constexpr BlockTable block_table() {
  return make_block_table<Form>(std::make_index_sequence<kEncodingCount * kPhaseCount>());
}

}  // namespace kv

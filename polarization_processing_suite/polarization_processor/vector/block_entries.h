#pragma once

#include <cstddef>
#include <utility>

#include "polarization_processor/vector/blocks.h"

namespace kv {

enum class Wanted { all, scheduled, others };

constexpr bool is_wanted(Wanted wanted, const EncodingAxes& encoding) {
  return wanted == Wanted::all || (wanted == Wanted::scheduled) == is_scheduled(encoding);
}

/// The wanted blocks of a form, null elsewhere: `Form::run<axes>` is a RunBlocks. A form lives in
/// an unnamed namespace of its file, and so does all that is made of it.
template <class Form, Wanted wanted>
constexpr BlockEntries block_entries() {
  const auto entry = []<std::size_t index>() -> RunBlocks {
    constexpr EncodingAxes encoding = kEncodings[index / kPhaseCount];
    if constexpr (is_wanted(wanted, encoding)) {
      return &Form::template run<block_axes(encoding, index % kPhaseCount)>;
    } else {
      return nullptr;
    }
  };
  return [&]<std::size_t... index>(std::index_sequence<index...>) {
    BlockEntries entries{};
    ((entries[index / kPhaseCount][index % kPhaseCount] = entry.template operator()<index>()), ...);
    return entries;
  }
  (std::make_index_sequence<kEncodingCount * kPhaseCount>());
}

}  // namespace kv

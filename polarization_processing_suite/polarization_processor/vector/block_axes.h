#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "polarization_processor/pixel/output_set.h"

namespace kv {

inline constexpr std::uint32_t kPhaseCount = 4;

/// What a vector block is specialised for, beside its instruction set.
struct BlockAxes {
  EncodingAxes encoding;
  std::uint32_t phase = 0;  ///< 0 to 3: the top-left pixel lies behind 0, 45, 90, 135 degrees.

  constexpr bool operator==(const BlockAxes&) const = default;
};

/// S0 has no phase, so intensity alone has one block for all four; every other encoding has four.
inline constexpr std::size_t kBlockVariantCount = (kEncodingCount - 2) * kPhaseCount + 2;

constexpr bool depends_on_phase(const OutputSet& outputs) { return outputs != kIntensityAlone; }

inline constexpr std::array<BlockAxes, kBlockVariantCount> kBlockVariants = [] {
  std::array<BlockAxes, kBlockVariantCount> variants{};
  std::size_t count = 0;
  for (const EncodingAxes& encoding : kEncodings) {
    const std::uint32_t phases = depends_on_phase(encoding.outputs) ? kPhaseCount : 1;
    for (std::uint32_t phase = 0; phase < phases; ++phase) variants[count++] = {encoding, phase};
  }
  return variants;
}();

/// Index of each encoding's variant of phase 0.
inline constexpr std::array<std::size_t, kEncodingCount> kFirstBlockVariants = [] {
  std::array<std::size_t, kEncodingCount> first{};
  for (std::size_t index = kBlockVariantCount; index-- > 0;) {
    first[encoding_index(kBlockVariants[index].encoding)] = index;
  }
  return first;
}();

constexpr std::size_t block_variant_index(const BlockAxes& axes) {
  const std::uint32_t phase = depends_on_phase(axes.encoding.outputs) ? axes.phase : 0;
  return kFirstBlockVariants[encoding_index(axes.encoding)] + phase;
}

}  // namespace kv

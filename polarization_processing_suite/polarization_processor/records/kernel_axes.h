// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "planes/plane_list.h"
#include "polarization_processor/records/transform_request.h"

// Everything that can vary from frame to frame, and so tells one frame kernel from another.
namespace kv {

/// The Stokes values that something is made of.
struct StokesNeeds {
  bool s0 = false;
  bool s1 = false;
  bool s2 = false;
};

constexpr StokesNeeds needs_of(PlaneSource source) {
  const bool all = source == PlaneSource::ratios || source == PlaneSource::dolp;
  const bool angle = source == PlaneSource::azimuth;
  return {.s0 = all || source == PlaneSource::s0,
          .s1 = all || angle || source == PlaneSource::s1,
          .s2 = all || angle || source == PlaneSource::s2};
}

constexpr StokesNeeds needs_of(OutputSet outputs) {
  return {.s0 = outputs.has_any([](const PlaneTraits& t) { return needs_of(t.source).s0; }),
          .s1 = outputs.has_any([](const PlaneTraits& t) { return needs_of(t.source).s1; }),
          .s2 = outputs.has_any([](const PlaneTraits& t) { return needs_of(t.source).s2; })};
}

constexpr bool has_linear_plane(OutputSet outputs) {
  return outputs.has_any([](const PlaneTraits& traits) { return traits.is_linear(); });
}

/// Calls `visit.operator()<plane>()` for each plane of the set, in the order of the list.
template <OutputSet outputs, class Visit>
constexpr void for_each_plane(const Visit& visit) {
  const auto visit_if_wanted = [&]<std::size_t index>() {
    constexpr Plane plane = kPlanes[index].plane;
    if constexpr (outputs.has(plane)) visit.template operator()<plane>();
  };
  [&]<std::size_t... index>(std::index_sequence<index...>) {
    (visit_if_wanted.template operator()<index>(), ...);
  }
  (std::make_index_sequence<kPlanes.size()>());
}

/// What is written at a pixel: which planes, and whether the linear ones are scaled from the
/// samples' range to that of the output.
struct EncodingAxes {
  OutputSet outputs;
  bool scaled = false;

  constexpr bool operator==(const EncodingAxes&) const = default;
};

/// 63 sets unscaled, and the 56 sets with a linear plane scaled as well.
inline constexpr std::size_t kEncodingCount = 63 + 56;

inline constexpr std::array<EncodingAxes, kEncodingCount> kEncodings = [] {
  std::array<EncodingAxes, kEncodingCount> encodings{};
  std::size_t count = 0;
  for (const bool scaled : {false, true}) {
    for (std::size_t number = 1; number < 64; ++number) {
      const OutputSet outputs = OutputSet::from_number(number);
      if (!scaled || has_linear_plane(outputs)) encodings[count++] = {outputs, scaled};
    }
  }
  return encodings;
}();

/// Place of an encoding in the list. A scaled set without a linear plane has that of the unscaled
/// one.
constexpr std::size_t encoding_index(const EncodingAxes& encoding) {
  constexpr auto indices = [] {
    std::array<std::array<std::uint8_t, 64>, 2> places{};
    for (std::size_t index = 0; index < kEncodingCount; ++index) {
      const EncodingAxes& listed = kEncodings[index];
      places[listed.scaled ? 1 : 0][listed.outputs.bits] = static_cast<std::uint8_t>(index);
      if (!has_linear_plane(listed.outputs)) {
        places[1][listed.outputs.bits] = static_cast<std::uint8_t>(index);
      }
    }
    return places;
  }();
  return indices[encoding.scaled ? 1 : 0][encoding.outputs.bits];
}

inline constexpr std::uint32_t kPhaseCount = 4;

/// What a vector block is made for, beside its instruction set.
struct BlockAxes {
  EncodingAxes encoding;
  std::uint32_t phase = 0;  ///< 0 to 3: the top-left pixel lies behind 0, 45, 90, 135 degrees.
};

/// S0 has no phase, so that one block of intensity alone serves all four.
constexpr BlockAxes block_axes(const EncodingAxes& encoding, std::uint32_t phase) {
  return {encoding, encoding.outputs == OutputSet(Plane::intensity) ? 0 : phase};
}

struct KernelAxes {
  EncodingAxes encoding;
  std::uint32_t phase = 0;
  bool even_height = false;
  bool even_width = false;
  bool sse41 = false;
};

KernelAxes kernel_axes_of(const TransformRequest& request, bool sse41_available);

/// The family: each encoding in each phase that it knows, for both parities of height and of width,
/// in the SSE2 and the SSE4.1 form.
inline constexpr std::size_t kKernelCount = ((kEncodingCount - 2) * kPhaseCount + 2) * 8;

constexpr std::array<KernelAxes, kKernelCount> all_kernel_axes() {
  std::array<KernelAxes, kKernelCount> family{};
  std::size_t count = 0;
  for (const EncodingAxes& encoding : kEncodings) {
    for (std::uint32_t phase = 0; phase < kPhaseCount; ++phase) {
      if (block_axes(encoding, phase).phase != phase) continue;
      for (unsigned flags = 0; flags < 8; ++flags) {
        family[count++] = {encoding, phase, (flags & 4) != 0, (flags & 2) != 0, (flags & 1) != 0};
      }
    }
  }
  return family;
}

}  // namespace kv

#pragma once

#include <array>
#include <cstddef>

namespace kv {

/// The planes that a call asks for.
struct OutputSet {
  bool normalized_stokes = false;
  bool intensity = false;
  bool stokes_s1 = false;
  bool stokes_s2 = false;
  bool azimuth = false;
  bool dolp = false;

  constexpr bool operator==(const OutputSet&) const = default;

  constexpr bool needs_s0() const { return normalized_stokes || intensity || dolp; }
  constexpr bool needs_s1() const { return normalized_stokes || stokes_s1 || azimuth || dolp; }
  constexpr bool needs_s2() const { return normalized_stokes || stokes_s2 || azimuth || dolp; }

  /// Only these planes depend on the ratio of output to input full scale.
  constexpr bool has_linear_plane() const { return intensity || stokes_s1 || stokes_s2; }
  constexpr bool has_quantised_plane() const { return has_linear_plane() || azimuth || dolp; }

  /// Position in the order of the 64 sets, the empty one being 0.
  constexpr std::size_t number() const {
    return (normalized_stokes ? 1u : 0u) | (intensity ? 2u : 0u) | (stokes_s1 ? 4u : 0u) |
           (stokes_s2 ? 8u : 0u) | (azimuth ? 16u : 0u) | (dolp ? 32u : 0u);
  }

  static constexpr OutputSet from_number(std::size_t number) {
    return {(number & 1) != 0, (number & 2) != 0,  (number & 4) != 0,
            (number & 8) != 0, (number & 16) != 0, (number & 32) != 0};
  }
};

constexpr OutputSet kIntensityAlone{.intensity = true};

/// What is written at a pixel: which planes, and whether the linear ones are scaled from the
/// sample's range to that of the output.
struct EncodingAxes {
  OutputSet outputs;
  bool scaled = false;

  constexpr bool operator==(const EncodingAxes&) const = default;
};

/// 63 sets unscaled, and the 56 sets with a linear plane scaled as well.
inline constexpr std::size_t kEncodingCount = 119;

inline constexpr std::array<EncodingAxes, kEncodingCount> kEncodings = [] {
  std::array<EncodingAxes, kEncodingCount> encodings{};
  std::size_t count = 0;
  for (const bool scaled : {false, true}) {
    for (std::size_t number = 1; number < 64; ++number) {
      const OutputSet outputs = OutputSet::from_number(number);
      if (!scaled || outputs.has_linear_plane()) encodings[count++] = {outputs, scaled};
    }
  }
  return encodings;
}();

/// Inverse of kEncodings: index 64 * scaled + OutputSet::number(). A scaled set without a linear
/// plane has the encoding of the unscaled one; the empty set has none and is mapped to 0.
inline constexpr std::array<std::size_t, 128> kEncodingIndices = [] {
  std::array<std::size_t, 128> indices{};
  for (std::size_t index = 0; index < kEncodingCount; ++index) {
    const auto [outputs, scaled] = kEncodings[index];
    indices[(scaled ? 64u : 0u) + outputs.number()] = index;
    if (!outputs.has_linear_plane()) indices[64 + outputs.number()] = index;
  }
  return indices;
}();

constexpr std::size_t encoding_index(EncodingAxes encoding) {
  return kEncodingIndices[(encoding.scaled ? 64u : 0u) + encoding.outputs.number()];
}

}  // namespace kv

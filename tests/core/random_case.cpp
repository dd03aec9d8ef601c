// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "random_case.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <ostream>
#include <random>

#include "polarization_processor/processor_instance.h"

namespace kv::test {
namespace {

using Random = std::mt19937;

template <class Choices>
const auto& pick(const Choices& choices, Random& random) {
  return choices[random() % choices.size()];
}

struct Size {
  std::size_t height, width;
};

/// Widths up to 40 are 0 to 9 blocks with every remainder; the others hold the widest group of
/// blocks, once and twice, with blocks left over. Heights up to 9 are up to 4 row pairs. Widths of
/// 2 and 3 come back from a height of 2 only.
const std::vector<Size> kSizes = [] {
  std::vector<Size> sizes;
  for (std::size_t height = 2; height <= 9; ++height) {
    for (std::size_t width = height == 2 ? 2 : 4; width <= 40; ++width) {
      sizes.push_back({height, width});
    }
    for (const std::size_t width : {71u, 86u, 133u, 148u}) sizes.push_back({height, width});
  }
  return sizes;
}();

constexpr std::array<std::uint32_t, 6> kBitDepths{0, 8, 10, 12, 14, 16};
constexpr std::array<std::uint16_t, 7> kOutputMaxima{1, 255, 1023, 4095, 4096, 16383, 65535};

/// Samples from 0 to `full_scale`, and beyond: all bits of a sample count.
using SampleKind = std::uint_fast32_t (*)(Random& random, std::uint_fast32_t full_scale);
constexpr std::array<SampleKind, 8> kSampleKinds{
    [](Random&, auto) -> std::uint_fast32_t { return 0; },
    [](Random&, auto full_scale) { return full_scale; },
    [](Random&, auto) -> std::uint_fast32_t { return 65535; },
    [](Random& random, auto full_scale) { return random() % (full_scale + 1); },
    [](Random& random, auto) { return random() % 65536; },
    [](Random& random, auto) { return random() % 16 == 0 ? random() % 65536 : 0; },
    [](Random& random, auto) { return random() % 3; },
    [](Random& random, auto full_scale) { return full_scale - std::min(full_scale, random() % 3); },
};

constexpr float kInfinity = std::numeric_limits<float>::infinity();
/// None is a NaN: which of two NaNs a sum keeps depends on the order of its operands.
constexpr std::array<float, 8> kExtremes{0, -0.0f, 1, 1e-40f, 3e38f, -3e38f, kInfinity, -kInfinity};

/// The default ones, near them, any and extreme ones.
using WeightKind = float (*)(Random& random, float default_weight);
constexpr std::array<WeightKind, 4> kWeightKinds{
    [](Random&, float w) { return w; },
    [](Random& random, float w) { return w + static_cast<float>(random() % 2001) * 1e-4f - 0.1f; },
    [](Random& random, float) { return static_cast<float>(random() % 400001) * 1e-5f - 2; },
    [](Random& random, float) { return pick(kExtremes, random); },
};

std::uint32_t number_from_environment(const char* name, std::uint32_t otherwise) {
  const char* const text = std::getenv(name);
  return text == nullptr ? otherwise : static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10));
}

}  // namespace

RandomCase random_case(std::uint32_t seed) {
  Random random(seed);
  const Size& size = kSizes[seed % kSizes.size()];
  const std::uint32_t bit_depth = pick(kBitDepths, random);
  const auto input_max = static_cast<std::uint16_t>((1u << bit_depth) - 1);
  const bool scaled = bit_depth == 0 || random() % 2 == 0;
  const SampleKind sample_kind = pick(kSampleKinds, random);
  const WeightKind weight_kind = pick(kWeightKinds, random);

  RandomCase result{.seed = seed,
                    .frame = {.height = size.height,
                              .width = size.width,
                              .bit_depth = bit_depth,
                              .output_max = scaled ? pick(kOutputMaxima, random) : input_max},
                    .coefficients = PolarizationProcessor(CpuTier::baseline).coefficient_store,
                    .rounding = pick(kRoundingModes, random)};
  result.frame.samples.resize(size.height * size.width);
  for (std::uint16_t& sample : result.frame.samples) {
    sample = static_cast<std::uint16_t>(sample_kind(random, input_max));
  }
  for (CoefficientSet& set : result.coefficients) {
    for (auto* const row :
         {&set.s0_weights, &set.s1_weights, &set.s2_weights, &set.spare_weights}) {
      for (float& weight : *row) weight = weight_kind(random, weight);
    }
  }
  return result;
}

std::ostream& operator<<(std::ostream& out, const RandomCase& c) {
  return out << "height " << c.frame.height << ", width " << c.frame.width << ", bit_depth "
             << c.frame.bit_depth << ", output_max " << c.frame.output_max << ", rounding "
             << c.rounding.name << "\nto repeat: KV_TEST_SEED=" << c.seed << " KV_TEST_FRAMES=1";
}

std::uint32_t first_seed() {
  static const std::uint32_t seed =
      number_from_environment("KV_TEST_SEED", std::uint32_t{std::random_device()()});
  return seed;
}

std::uint32_t frame_count() {
  const std::uint32_t rounds = number_from_environment("KV_TEST_ROUNDS", 5);
  return number_from_environment("KV_TEST_FRAMES",
                                 rounds * static_cast<std::uint32_t>(kSizes.size()));
}

}  // namespace kv::test

#include <gtest/gtest.h>

#include <bit>
#include <cstring>

#include "public_call.h"

namespace kv::test {
namespace {

constexpr std::array<Weights, 4> kDefaults{{
    {1, 1, 1, 1, /**/ 1, 0, 0, -1, /**/ 0, -1, 1, 0, /**/ 0, 0, 0, 0},
    {1, 1, 1, 1, /**/ 0, -1, 1, 0, /**/ 1, 0, 0, -1, /**/ 0, 0, 0, 0},
    {1, 1, 1, 1, /**/ -1, 0, 0, 1, /**/ 0, 1, -1, 0, /**/ 0, 0, 0, 0},
    {1, 1, 1, 1, /**/ 0, 1, -1, 0, /**/ -1, 0, 0, 1, /**/ 0, 0, 0, 0},
}};

std::array<Weights, 4> weights_of(const Processor& processor) {
  std::array<Weights, 4> weights{};
  EXPECT_EQ(get_weights(processor.handle(), weights), kv_status_ok);
  return weights;
}

Weights counting_from(float first) {
  Weights weights;
  for (float& weight : weights) weight = first++;
  return weights;
}

ProcessorStatus set_one(PolarizationProcessor* handle, std::size_t index, const Weights& weights) {
  std::array<const float*, 4> sets{};
  sets[index] = weights.data();
  return kv_polarization_processor_set_custom_calibration_coefficients(handle, sets[0], sets[1],
                                                                       sets[2], sets[3]);
}

TEST(Coefficients, NewProcessorHasTheDefaults) { EXPECT_EQ(weights_of(Processor()), kDefaults); }

TEST(Coefficients, EachSetIsSetByItself) {
  for (std::size_t index = 0; index < 4; ++index) {
    const Processor processor;
    std::array<Weights, 4> expected = kDefaults;
    expected[index] = counting_from(100.5f);
    EXPECT_EQ(set_one(processor.handle(), index, expected[index]), kv_status_ok);
    EXPECT_EQ(weights_of(processor), expected) << "set " << index;
  }
}

TEST(Coefficients, NullPointersLeaveSetsAlone) {
  const Processor processor;
  EXPECT_EQ(kv_polarization_processor_set_custom_calibration_coefficients(
                processor.handle(), nullptr, nullptr, nullptr, nullptr),
            kv_status_ok);
  EXPECT_EQ(weights_of(processor), kDefaults);

  Weights third{};
  EXPECT_EQ(kv_polarization_processor_get_custom_calibration_coefficients(
                processor.handle(), nullptr, nullptr, third.data(), nullptr),
            kv_status_ok);
  EXPECT_EQ(third, kDefaults[2]);
}

TEST(Coefficients, EveryBitPatternIsKept) {
  const Processor processor;
  Weights unusual{};
  for (std::size_t i = 0; i < unusual.size(); ++i) {
    // Quiet and signalling NaNs of either sign with payloads.
    const auto payload = static_cast<std::uint32_t>(i + 1);
    unusual[i] = std::bit_cast<float>((i % 2 ? 0x7F800000u : 0xFFC00000u) | payload);
  }
  ASSERT_EQ(set_one(processor.handle(), 1, unusual), kv_status_ok);
  const std::array<Weights, 4> got = weights_of(processor);
  EXPECT_EQ(std::memcmp(got[1].data(), unusual.data(), sizeof unusual), 0);
}

TEST(Coefficients, ProcessorsAreIndependent) {
  const Processor changed;
  const Processor other;
  ASSERT_EQ(set_one(changed.handle(), 0, counting_from(1)), kv_status_ok);
  EXPECT_EQ(weights_of(other), kDefaults);
}

TEST(Coefficients, SpareWeightsChangeNoPlane) {
  const Processor plain;
  const Processor spare_in_use;
  std::array<Weights, 4> weights = kDefaults;
  for (Weights& set : weights) {
    for (std::size_t i = 12; i < 16; ++i) set[i] = std::bit_cast<float>(0x7FC00000u);
  }
  ASSERT_EQ(set_weights(spare_in_use.handle(), weights), kv_status_ok);

  const std::vector<std::uint16_t> frame{900, 100, 500, 300, 20, 70};
  const Arguments arguments{.width = 3, .height = 2};
  const Planes expected = transformed(plain, arguments, frame);
  const Planes actual = transformed(spare_in_use, arguments, frame);
  EXPECT_EQ(difference(actual, expected, 3), "");
}

}  // namespace
}  // namespace kv::test

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <bit>
#include <cstring>

#include "public_call.h"

namespace kv::test {
namespace {

using Sets = std::array<Weights, 4>;

constexpr Sets kDefaults{{
    {1, 1, 1, 1, /**/ 1, 0, 0, -1, /**/ 0, -1, 1, 0, /**/ 0, 0, 0, 0},
    {1, 1, 1, 1, /**/ 0, -1, 1, 0, /**/ 1, 0, 0, -1, /**/ 0, 0, 0, 0},
    {1, 1, 1, 1, /**/ -1, 0, 0, 1, /**/ 0, 1, -1, 0, /**/ 0, 0, 0, 0},
    {1, 1, 1, 1, /**/ 0, 1, -1, 0, /**/ -1, 0, 0, 1, /**/ 0, 0, 0, 0},
}};

void expect_weights(const Processor& processor, const Sets& expected) {
  Sets weights{};
  EXPECT_EQ(get_weights(processor.handle(), weights), kv_status_ok);
  EXPECT_EQ(std::memcmp(&weights, &expected, sizeof weights), 0);
}

TEST(Coefficients, EachSetIsSetAndGotByItselfBitForBit) {
  const Processor other;
  Weights unusual;  // A different NaN in each place, quiet and signalling, of either sign.
  for (std::uint32_t i = 0; i < unusual.size(); ++i) {
    unusual[i] = std::bit_cast<float>((i % 2 ? 0x7F800000u : 0xFFC00000u) | (i + 1));
  }
  for (std::size_t index = 0; index < 4; ++index) {
    SCOPED_TRACE(index);
    const Processor processor;
    expect_weights(processor, kDefaults);
    std::array<const float*, 4> in{};
    in[index] = unusual.data();
    EXPECT_EQ(kv_polarization_processor_set_custom_calibration_coefficients(
                  processor.handle(), in[0], in[1], in[2], in[3]),
              kv_status_ok);
    Sets expected = kDefaults;
    expected[index] = unusual;
    expect_weights(processor, expected);
    expect_weights(other, kDefaults);

    Weights got{};
    std::array<float*, 4> out{};
    out[index] = got.data();
    EXPECT_EQ(kv_polarization_processor_get_custom_calibration_coefficients(
                  processor.handle(), out[0], out[1], out[2], out[3]),
              kv_status_ok);
    EXPECT_EQ(std::memcmp(&got, &unusual, sizeof got), 0);
  }
}

}  // namespace
}  // namespace kv::test

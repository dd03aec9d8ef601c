// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <vector>

TEST(CopyPastCaches, TakesAnyPlaceAndLeavesTheBytesAround) {
  std::vector<std::uint8_t> source(2048);
  std::iota(source.begin(), source.end(), std::uint8_t{0});
  for (const std::size_t size : {0u, 1u, 63u, 64u, 65u, 128u, 1000u}) {
    for (std::size_t to = 0; to < 70; to += 3) {
      for (const std::size_t from : {0u, 1u, 8u, 33u}) {
        std::vector<std::uint8_t> target(2048, 0xA5);
        std::vector<std::uint8_t> expected = target;
        std::copy_n(source.begin() + static_cast<std::ptrdiff_t>(from), size,
                    expected.begin() + static_cast<std::ptrdiff_t>(to));
        kv::platform::copy_past_caches(target.data() + to, source.data() + from, size);
        EXPECT_EQ(target, expected) << size << " bytes from " << from << " to " << to;
      }
    }
  }
}

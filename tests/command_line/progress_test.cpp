// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// The line that shows how far a run is.
#include <gtest/gtest.h>

#include "command_line/progress_text.h"

using namespace kv::polarization;

namespace {

TEST(ProgressText, SaysWhatFitsAndTheCountFirst) {
  const Progress known{1234, 3, 20000, 62.5};  // 18766 frames are left, which take 300.3 s
  const Progress unknown{1234, 0, {}, 0.256};
  struct Case {
    Progress progress;
    std::size_t columns;
    std::string text;
  };
  const std::string all = "1,234 of 20,000 frames, 62.5 frames/s, 3 failed, about 5 min left";
  ASSERT_EQ(all.size(), 65u);
  const Case cases[] = {
      {known, 119, "[" + std::string(2, '#') + std::string(38, '.') + "] " + all},
      {known, 79, "[...........] " + all},
      {known, 77, all},
      {known, 64, "1,234 of 20,000 frames, 3 failed, about 5 min left"},
      {known, 34, "1,234 of 20,000 frames, 3 failed"},
      {known, 22, "1,234 of 20,000 frames"},
      {known, 19, "1,234 of 20,000"},
      {known, 14, "1,234 frames"},
      {known, 11, "1,234"},
      {known, 4, ""},
      {unknown, 79, "1,234 frames, 0.26 frames/s"},
      {{2, 0, 2, 1234.5}, 41, "[##########] 2 of 2 frames, 1234 frames/s"},
      {{0, 0, 1000, 0}, 22, "0 of 1,000 frames"},
      {{0, 0, 40, 1}, 57, "0 of 40 frames, 1.0 frames/s, about 40 s left"},
      {{0, 0, 10800, 0.5}, 60, "0 of 10,800 frames, 0.50 frames/s, about 6 h left"},
  };
  for (const auto& [progress, columns, text] : cases) {
    EXPECT_EQ(progress_text(progress, "frames", columns), text) << columns;
  }
}

TEST(ProgressRate, IsThatOfTheLastHalfMinute) {
  ProgressRate rate;
  EXPECT_FALSE(rate.at(0, 0));
  EXPECT_FALSE(rate.at(0.5, 100));
  EXPECT_EQ(rate.at(2, 200), 100);
  // 100 a second for 100 seconds, then 10.
  for (unsigned second = 3; second <= 100; ++second) rate.at(second, 100 * second);
  for (unsigned second = 101; second <= 115; ++second) rate.at(second, 10000 + 10 * (second - 100));
  EXPECT_EQ(rate.at(115.5, 10150), 1650 / 30.5);
  for (unsigned second = 116; second <= 131; ++second) rate.at(second, 10000 + 10 * (second - 100));
  EXPECT_EQ(rate.at(132, 10320), 10);
}

}  // namespace

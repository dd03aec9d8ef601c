// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>

#include "error_of.h"
#include "kv/calibration/fit_plan.h"
#include "simulated_stack.h"

namespace kv::test {
namespace {

FrameAgain reader_of(const SimulatedStack& stack) {
  return [&stack](std::size_t number) { return stack.frames[number].view(); };
}

std::vector<std::byte> bytes_of(const CalibrationFit& part) {
  std::vector<std::byte> bytes(part.byte_size());
  part.write(bytes);
  return bytes;
}

/// Part `from` is merged into part `into`.
struct Merge {
  std::size_t into, from;
};

/// Frames are dealt out in turns, the last ones first; the merges leave all in part 0.
Calibration fit_in_parts(const SimulatedStack& stack, const FitSettings& settings,
                         std::size_t count, const std::vector<Merge>& merges) {
  const FitPlan plan(settings, stack.kinds, reader_of(stack));
  std::vector<CalibrationFit> parts;
  for (std::size_t i = 0; i < count; ++i) {
    parts.emplace_back(FitPlan::from_bytes(plan.to_bytes()));
    for (std::size_t number = stack.frames.size(); number-- > 0;) {
      if (number % count == i) parts[i].add_planned(stack.frames[number], number);
    }
  }
  for (const Merge& merge : merges) {
    parts[merge.into].merge(CalibrationFit::from_bytes(bytes_of(parts[merge.from]), 1));
  }
  return parts[0].finish(reader_of(stack));
}

/// Of good pixels: what others are is not determined.
void expect_near(const Calibration& found, const Calibration& expected,
                 Buffer<float> PixelMaps::*map, double share, double distance = 0) {
  for (std::size_t i = 0; i < expected.maps.bad.size(); ++i) {
    if (expected.maps.bad[i] != 0) continue;
    const double value = (expected.maps.*map)[i];
    ASSERT_NEAR((found.maps.*map)[i], value, share * std::abs(value) + distance) << i;
  }
}

void expect_equal_but_for_rounding(const Calibration& found, const Calibration& expected) {
  EXPECT_EQ(found.maps.bad, expected.maps.bad);
  for (const auto map : {&PixelMaps::black, &PixelMaps::gain, &PixelMaps::diattenuation,
                         &PixelMaps::gain_error, &PixelMaps::orientation_error}) {
    expect_near(found, expected, map, 1e-6);
  }
  expect_near(found, expected, &PixelMaps::orientation, 0, 1e-5);
  ASSERT_EQ(found.frames.size(), expected.frames.size());
  for (std::size_t i = 0; i < found.frames.size(); ++i) {
    EXPECT_EQ(found.frames[i].name, expected.frames[i].name);
    EXPECT_EQ(found.frames[i].refusal, expected.frames[i].refusal);
    EXPECT_EQ(found.frames[i].used, expected.frames[i].used);
    EXPECT_EQ(found.frames[i].angle, expected.frames[i].angle);
    EXPECT_EQ(found.frames[i].class_means, expected.frames[i].class_means);
    EXPECT_NEAR(found.frames[i].excess, expected.frames[i].excess, 1e-5);
  }
  ASSERT_EQ(found.findings.size(), expected.findings.size());
  for (std::size_t i = 0; i < found.findings.size(); ++i) {
    const Finding& finding = expected.findings[i];
    EXPECT_EQ(found.findings[i].verdict, finding.verdict) << finding.name;
    EXPECT_NEAR(found.findings[i].found, finding.found, 1e-5 * std::abs(finding.found));
    EXPECT_NEAR(found.findings[i].expected, finding.expected, 1e-5 * finding.expected);
  }
}

// The frame that is refused was summed in a part that is long gone when it is read again.
TEST(CalibrationParts, AreOneFit) {
  for (const bool angles_known : {true, false}) {
    SimulatedStack stack{SimulatedSensor({.bad_share = 0.01})};
    stack.add_flats(3);
    stack.frames[1] = make_frame(32, 30, 12);
    for (int i = 0; i < 36; ++i) {
      const double nobody_knows = std::numeric_limits<double>::quiet_NaN();
      stack.add(FrameKind::polarized, angles_known || i == 0 ? 10 * i : nobody_knows,
                polarized_light(i == 17 ? 1.4 : 0.8, 10 * i));
      if (i == 7) stack.add_darks(4);  // frames count otherwise before and after the first dark
    }
    FitSettings settings = stack.settings();
    settings.angles_known = angles_known;
    settings.black_level = 60;
    const Calibration expected = stack.fit(settings);
    ASSERT_FALSE(expected.frames[3 + 4 + 17].used);
    const std::vector<std::vector<Merge>> trees[] = {
        {{}}, {{{0, 1}}}, {{{0, 1}, {0, 2}, {0, 3}, {0, 4}}, {{3, 4}, {1, 2}, {1, 3}, {0, 1}}}};
    const std::size_t counts[] = {1, 2, 5};
    for (std::size_t i = 0; i < 3; ++i) {
      SCOPED_TRACE(counts[i]);
      for (const std::vector<Merge>& merges : trees[i]) {
        expect_equal_but_for_rounding(fit_in_parts(stack, settings, counts[i], merges), expected);
      }
    }
    CalibrationFit in_order(FitPlan(settings, stack.kinds, reader_of(stack)));
    for (std::size_t i = 0; i < stack.frames.size(); ++i) {
      in_order.add_planned(stack.frames[i], i);
    }
    const Calibration same = in_order.finish(reader_of(stack));
    EXPECT_EQ(same.maps.gain, expected.maps.gain);
    EXPECT_EQ(same.maps.orientation_error, expected.maps.orientation_error);
    EXPECT_EQ(same.findings[0].found, expected.findings[0].found);
  }
}

SimulatedStack small_stack() {
  SimulatedStack stack{SimulatedSensor({.width = 10, .height = 6})};
  stack.add_darks(1);
  for (const double angle : {0, 60, 120}) stack.add_polarized(angle);
  stack.add_flats(1);
  return stack;
}

TEST(CalibrationParts, KeepToTheirPlan) {
  const SimulatedStack stack = small_stack();
  const FitPlan plan(stack.settings(), stack.kinds, reader_of(stack));
  std::vector<StackFrame> other_kinds = stack.kinds;
  other_kinds[2].angle = 61;
  const FitPlan other(stack.settings(), other_kinds, reader_of(stack));
  EXPECT_FALSE(plan == other);
  CalibrationFit fit(plan);
  CalibrationFit alone(stack.settings());
  const auto part_of = [&](const FitPlan& its_plan, std::size_t number) {
    CalibrationFit part(its_plan);
    part.add_planned(stack.frames[number], number);
    return part;
  };
  fit.merge(part_of(plan, 2));
  const auto again = [&] { fit.add_planned(stack.frames[2], 2); };
  const auto beyond = [&] { fit.add_planned(stack.frames[2], 5); };
  const auto both = [&] { fit.merge(part_of(plan, 2)); };
  const auto foreign = [&] { fit.merge(part_of(other, 3)); };
  const auto no_plan = [&] { fit.merge(CalibrationFit(stack.settings())); };
  const auto itself = [&] { fit.merge(std::move(fit)); };
  for (const auto& [action, line] :
       std::initializer_list<std::pair<std::function<void()>, const char*>>{
           {again, "frame 2 came twice"},
           {beyond, "frames 0 to 4"},
           {both, "frame 2 came twice"},
           {foreign, "the same plan"},
           {no_plan, "the same plan"},
           {itself, "into itself"}}) {
    EXPECT_PRED2(contains, error_of(action), line);
    EXPECT_EQ(kind_of(action), FaultKind::argument) << line;
  }
  EXPECT_PRED2(contains, error_of([&] { fit.finish({}); }), "4 of the 5 frames");
  EXPECT_EQ(kind_of([&] { fit.add(stack.frames[0], stack.kinds[0]); }), FaultKind::state);
  EXPECT_EQ(kind_of([&] { alone.add_planned(stack.frames[0], 0); }), FaultKind::state);
  EXPECT_EQ(kind_of([&] { alone.byte_size(); }), FaultKind::state);
  for (const std::size_t number : {4u, 3u, 1u, 0u}) fit.merge(part_of(plan, number));
  EXPECT_EQ(fit.finish({}).frames[4].name, "frame 4");
}

TEST(CalibrationParts, BelieveNoBytes) {
  const SimulatedStack stack = small_stack();
  const FitPlan plan(stack.settings(), stack.kinds, reader_of(stack));
  CalibrationFit part(plan);
  for (std::size_t i = 0; i < 5; ++i) part.add_planned(stack.frames[i], i);
  std::vector<std::byte> bytes = bytes_of(part);
  const auto fault = [](const std::vector<std::byte>& some) {
    return kind_of([&] { CalibrationFit::from_bytes(some, 1); });
  };
  ASSERT_EQ(fault(bytes), std::nullopt);
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    ASSERT_EQ(fault({bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)}),
              FaultKind::argument);
  }
  // A changed byte that leaves values that can be passes; no other is more than an argument fault.
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    for (const std::byte mask : {std::byte{1}, std::byte{0x80}, std::byte{0xff}}) {
      bytes[i] ^= mask;
      const auto kind = fault(bytes);
      EXPECT_EQ(kind.value_or(FaultKind::argument), FaultKind::argument) << i;
      EXPECT_TRUE(i >= 24 || kind) << i;
      bytes[i] ^= mask;
    }
  }
  const std::size_t sums = bytes.size() - 60 * 53;
  for (const float wrong : {std::numeric_limits<float>::quiet_NaN(), 1e20f, -1e20f}) {
    for (std::size_t map = 0; map < 13; ++map) {
      std::vector<std::byte> changed = bytes;
      std::memcpy(changed.data() + sums + (60 * map + 59) * sizeof wrong, &wrong, sizeof wrong);
      EXPECT_EQ(fault(changed), FaultKind::argument) << map;
    }
  }
  bytes.push_back({});
  EXPECT_EQ(fault(bytes), FaultKind::argument);
  EXPECT_EQ(kind_of([&] { part.write(bytes); }), FaultKind::argument);
  EXPECT_EQ(kind_of([&] { FitPlan::from_bytes(bytes); }), FaultKind::argument);
}

}  // namespace
}  // namespace kv::test

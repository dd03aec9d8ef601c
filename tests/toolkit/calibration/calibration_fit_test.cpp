// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/calibration/calibration_fit.h"

#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <cmath>
#include <functional>
#include <limits>
#include <numbers>

#include "error_of.h"
#include "kv/calibration/analyser.h"
#include "simulated_stack.h"

namespace kv::test {
namespace {

constexpr double kTwice = std::numbers::pi / 90;  // radians of a doubled degree

struct Rms {
  double sum = 0, squares = 0, count = 0;
  void add(double value) {
    sum += value;
    squares += value * value;
    count += 1;
  }
  double mean() const { return sum / count; }
  double rms() const { return std::sqrt(squares / count); }
};

struct CellErrors {
  Rms dolp, angle;
};

int nominal_at(const Calibration& c, std::size_t pixel) {
  const auto width = static_cast<std::size_t>(c.width);
  return cell_angles(c.mosaic)[2 * (pixel / width % 2) + pixel % width % 2];
}

/// Light of a DoLP of 1 through the true sensor, without noise, and back through the calibration,
/// in every cell without a bad pixel.
CellErrors cell_errors(const SensorTruth& truth, const Calibration& c) {
  const auto width = static_cast<std::size_t>(c.width);
  CellErrors errors;
  for (std::size_t first = 0; first < truth.gain.size();
       first += first % width == width - 2 ? width + 2 : 2) {
    const std::array pixels{first, first + 1, first + width, first + width + 1};
    CellResponse found{};
    bool good = true;
    for (std::size_t i = 0; i < 4; ++i) {
      const std::size_t pixel = pixels[i];
      good = good && c.maps.bad[pixel] == 0;
      found[i] = {c.maps.gain[pixel], c.maps.diattenuation[pixel],
                  nominal_at(c, pixel) + static_cast<double>(c.maps.orientation[pixel])};
    }
    if (!good) continue;
    for (double angle = 3; angle < 180; angle += 22.5) {
      CellSamples samples{};
      for (std::size_t i = 0; i < 4; ++i) {
        const double between = (angle - static_cast<double>(truth.orientation[pixels[i]])) * kTwice;
        samples[i] =
            truth.gain[pixels[i]] * (1 + truth.diattenuation[pixels[i]] * std::cos(between));
      }
      const StokesValues stokes = stokes_of_cell(stokes_matrix(found), samples);
      errors.dolp.add(std::hypot(stokes[1], stokes[2]) / stokes[0] - 1);
      errors.angle.add(std::remainder(std::atan2(stokes[2], stokes[1]) / kTwice - angle, 180));
    }
  }
  return errors;
}

/// The least rms errors that any unbiased fit of each pixel to `angles` can leave (Cramer and Rao),
/// for ideal orientations, D = 0.95, light of S0 = 0.8 and 10,000 electrons with a read noise
/// of 2.5.
CellErrors noise_alone(const std::vector<double>& angles) {
  const auto light = [](double angle) {
    return Eigen::Vector3d(1, std::cos(angle * kTwice), std::sin(angle * kTwice));
  };
  Eigen::Matrix<double, 4, 3> cell;
  std::array<Eigen::Matrix3d, 4> covariances;
  for (int i = 0; i < 4; ++i) {
    cell.row(i) = 4000 * Eigen::Vector3d(1, 0.95, 0.95).cwiseProduct(light(45 * i));
    Eigen::Matrix3d information = Eigen::Matrix3d::Zero();
    for (const double angle : angles) {
      information += light(angle) * light(angle).transpose() / (cell.row(i) * light(angle) + 6.25);
    }
    covariances[static_cast<std::size_t>(i)] = information.inverse();
  }
  const Eigen::Matrix<double, 3, 4> inverse =
      (cell.transpose() * cell).inverse() * cell.transpose();
  CellErrors errors;
  for (double angle = 3; angle < 180; angle += 22.5) {
    Eigen::Vector4d variances;
    for (int i = 0; i < 4; ++i) {
      variances[i] = light(angle).dot(covariances[static_cast<std::size_t>(i)] * light(angle));
    }
    const Eigen::Matrix3d covariance = inverse * variances.asDiagonal() * inverse.transpose();
    const Eigen::Vector3d along = light(angle).cwiseProduct(Eigen::Vector3d(-1, 1, 1));
    const Eigen::Vector3d across(0, -light(angle)[2], light(angle)[1]);
    errors.dolp.add(std::sqrt(along.dot(covariance * along)));
    errors.angle.add(std::sqrt(across.dot(covariance * across)) / kTwice);
  }
  return errors;
}

std::vector<double> turn_angles(int count) {
  std::vector<double> angles;
  for (int i = 0; i < count; ++i) angles.push_back(i * 360.0 / count);
  return angles;
}

/// The sensor's own zero, by the true orientations of its good pixels.
double true_zero(const SensorTruth& truth, const Calibration& c) {
  Rms deviation;
  for (std::size_t pixel = 0; pixel < truth.orientation.size(); ++pixel) {
    if (c.maps.bad[pixel] != 0) continue;
    deviation.add(static_cast<double>(truth.orientation[pixel]) - nominal_at(c, pixel));
  }
  return deviation.mean();
}

void expect_calibrated(const SimulatedStack& stack, const Calibration& c,
                       const CellErrors& by_noise) {
  const CellErrors errors = cell_errors(stack.sensor.truth(), c);
  EXPECT_GT(errors.dolp.count, 8 * 2000);
  EXPECT_LT(std::abs(errors.dolp.mean()), 5e-4);
  EXPECT_LT(std::abs(errors.angle.mean() + true_zero(stack.sensor.truth(), c)), 0.01);
  EXPECT_LT(errors.dolp.rms(), 1.3 * by_noise.dolp.rms());
  EXPECT_LT(errors.angle.rms(), 1.3 * by_noise.angle.rms());
}

struct Case {
  const char* name;
  SimulatedSensorSettings sensor{};
  std::function<void(SimulatedStack&)> fill{};
  std::vector<double> angles = turn_angles(72);  ///< of the noise's share
  double black_level = 0;                        ///< told to the fit
};

void usual_stack(SimulatedStack& stack) {
  stack.add_darks(8);
  stack.add_turn(72);
}

TEST(CalibrationFit, FindsSensorsAsFarAsNoiseLets) {
  const std::vector<double> odd_angles = {0, 30, 50, 95, 110, 130, 171, 20, 77, 300};
  const Case cases[] = {
      {"usual", {}, usual_stack},
      {"8 bits", {.bit_depth = 8, .black_level = 8, .black_scatter = 0.05}, usual_stack},
      {"16 bits", {.bit_depth = 16, .black_level = 1000, .black_scatter = 16}, usual_stack},
      {"phase", {.mosaic = {kv_polar_phase_135, 0, 0}}, usual_stack},
      {"origin", {.mosaic = {kv_polar_phase_90, 3, 6}}, usual_stack},
      {"uneven classes",
       {.class_gains = {1.02, 1, 0.97, 1.01}, .class_turns = {1.5, -1, 0.5, -1}},
       usual_stack},
      {"bad pixels", {.bad_share = 0.01}, usual_stack},
      {"darks last",
       {},
       [](SimulatedStack& stack) {
         stack.add_turn(72);
         stack.add_darks(8);
       }},
      {"without darks",
       {.black_scatter = 0},
       [](SimulatedStack& stack) { stack.add_turn(72); },
       turn_angles(72),
       64},
      {"lamp drift",
       {},
       [](SimulatedStack& stack) {
         stack.add_darks(8);
         for (int i = 0; i < 72; ++i) {
           stack.add_polarized(5 * i, 0.8 * (1 + 0.05 * (i / 71.0 - 0.5) + 0.02 * std::sin(i)));
         }
       }},
      {"four angles",
       {},
       [](SimulatedStack& stack) {
         stack.add_darks(8);
         for (const double angle : {0, 45, 90, 135}) stack.add_polarized(angle);
       },
       {0, 45, 90, 135}},
      {"three angles",
       {},
       [](SimulatedStack& stack) {
         stack.add_darks(8);
         for (const double angle : {0, 60, 120}) stack.add_polarized(angle);
       },
       {0, 60, 120}},
      {"odd angles",
       {},
       [&](SimulatedStack& stack) {
         stack.add_darks(8);
         for (const double angle : odd_angles) stack.add_polarized(angle);
       },
       odd_angles},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.name);
    SimulatedStack stack{SimulatedSensor(test.sensor)};
    test.fill(stack);
    FitSettings settings = stack.settings();
    settings.black_level = test.black_level;
    const Calibration c = stack.fit(settings);
    expect_calibrated(stack, c, noise_alone(test.angles));
    for (const FrameRecord& record : c.frames) EXPECT_TRUE(record.used) << record.refusal;
  }
}

TEST(CalibrationFit, TellsItsErrorsAndTheNoise) {
  SimulatedStack stack{SimulatedSensor({})};
  usual_stack(stack);
  stack.add_flats(4);
  const Calibration c = stack.fit();
  const SensorTruth& truth = stack.sensor.truth();
  Rms gain_unit;
  for (const float gain : truth.gain) gain_unit.add(gain);
  const double zero = true_zero(truth, c);
  Rms gain, diattenuation, orientation;
  for (std::size_t i = 0; i < truth.gain.size(); ++i) {
    gain.add((c.maps.gain[i] - truth.gain[i] / gain_unit.mean()) / c.maps.gain_error[i]);
    diattenuation.add((c.maps.diattenuation[i] - truth.diattenuation[i]) /
                      c.maps.diattenuation_error[i]);
    orientation.add((nominal_at(c, i) + static_cast<double>(c.maps.orientation[i]) -
                     truth.orientation[i] + zero) /
                    c.maps.orientation_error[i]);
  }
  EXPECT_NEAR(gain.rms(), 1, 0.05);
  EXPECT_NEAR(diattenuation.rms(), 1, 0.05);
  EXPECT_NEAR(orientation.rms(), 1, 0.05);
  EXPECT_NEAR(c.noise.gain, (4095 - 64) / 10000.0, 0.005);
  EXPECT_NEAR(c.noise.read_noise, 2.5, 0.05);
  for (const PixelClass& pixels : c.classes) {
    EXPECT_NEAR(pixels.gain.value, pixels.nominal_angle % 90 == 0 ? 0.98 / 0.99 : 1 / 0.99, 1e-3);
    EXPECT_NEAR(pixels.gain_scatter, 0.015, 0.0007);
    EXPECT_NEAR(pixels.diattenuation_scatter, 0.02, 0.001);  // a few are cut off at 1
    EXPECT_NEAR(pixels.orientation_scatter, 1, 0.05);
  }
  // What an ideal analyser makes of light behind D = 0.95 and 1 and 2 per cent of other classes.
  EXPECT_NEAR(c.condition, std::numbers::sqrt2 / 0.95, 0.03);
  const CellErrors by_noise = noise_alone(turn_angles(72));
  for (const Finding& finding : c.findings) {
    EXPECT_TRUE(finding.good) << finding.name << ": " << finding.verdict;
    if (finding.name == "calibrated: DoLP error") {
      EXPECT_NEAR(finding.found, by_noise.dolp.rms(), 1e-4);
    } else if (finding.name == "calibrated: angle error") {
      EXPECT_NEAR(finding.found, by_noise.angle.rms(), 4e-3);
    }
  }
}

// A film that polarizes by 0.9 only must not be taken for pixels that do.
TEST(CalibrationFit, KnowsThePolarizationOfTheSource) {
  SimulatedStack stack{SimulatedSensor({})};
  stack.add_darks(4);
  for (int angle = 0; angle < 180; angle += 5) {
    SensorLight light = polarized_light(0.8, angle);
    light.stokes.s1 *= 0.9;
    light.stokes.s2 *= 0.9;
    stack.add(FrameKind::polarized, angle, light);
  }
  FitSettings settings = stack.settings();
  settings.source_dolp = 0.9;
  for (const PixelClass& pixels : stack.fit(settings).classes) {
    EXPECT_NEAR(pixels.diattenuation.value, 0.95, 2e-3);
  }
}

// As if the wrong frames had not been in the stack.
TEST(CalibrationFit, TakesOutFramesThatDoNotFit) {
  SimulatedStack stack{SimulatedSensor({.bad_share = 0.01})};
  stack.add_darks(7);
  std::set<std::size_t> wrong;
  std::vector<std::string> reasons;
  const auto add_wrong = [&](const char* reason, FrameKind kind, double angle,
                             const SensorLight& light) {
    wrong.insert(stack.frames.size());
    reasons.push_back(reason);
    stack.add(kind, angle, light);
  };
  add_wrong("not dark", FrameKind::dark, 0, unpolarized_light(0.1));
  for (int i = 0; i < 72; ++i) {
    const double angle = 5 * i;
    if (i == 10 || i == 40) {
      add_wrong("clipped", FrameKind::polarized, angle, polarized_light(1.3, angle));
    } else if (i == 20) {
      add_wrong("moved: its light is 3", FrameKind::polarized, angle,
                polarized_light(0.8, angle + 3));
    } else if (i == 30) {
      add_wrong("not uniform", FrameKind::polarized, angle, polarized_light(0.8, angle, 0.1));
    } else if (i == 33) {
      add_wrong("too dark", FrameKind::polarized, angle, polarized_light(0.05, angle));
    } else if (i == 36) {
      add_wrong("polarized otherwise", FrameKind::polarized, angle, unpolarized_light(0.8));
    } else {
      stack.add_polarized(angle, 0.8 * (1 + 0.05 * i / 71.0));
    }
  }
  const Calibration all = stack.fit();
  const Calibration good = stack.fit(stack.settings(), wrong);
  auto reason = reasons.begin();
  for (std::size_t i = 0; i < all.frames.size(); ++i) {
    EXPECT_EQ(all.frames[i].used, !wrong.contains(i)) << i << ": " << all.frames[i].refusal;
    if (wrong.contains(i)) {
      EXPECT_PRED2(contains, all.frames[i].refusal, *reason++);
    }
  }
  for (std::size_t i = 0; i < good.maps.gain.size(); ++i) {
    ASSERT_EQ(all.maps.bad[i], good.maps.bad[i]) << i;
    if (good.maps.bad[i] != 0) continue;
    ASSERT_NEAR(all.maps.gain[i], good.maps.gain[i], 2e-5) << i;
    ASSERT_NEAR(all.maps.diattenuation[i], good.maps.diattenuation[i], 2e-5) << i;
    ASSERT_NEAR(all.maps.orientation[i], good.maps.orientation[i], 1e-3) << i;
  }
}

TEST(CalibrationFit, FindsBadPixels) {
  SimulatedStack stack{SimulatedSensor({.bad_share = 0.02})};
  usual_stack(stack);
  const Calibration c = stack.fit();
  const int reasons[] = {0, bad_pixel::out_of_range, bad_pixel::clipped, bad_pixel::noisy};
  for (std::size_t i = 0; i < c.maps.bad.size(); ++i) {
    const int expected = reasons[stack.sensor.truth().flaws[i]];
    if (expected == 0) {
      EXPECT_EQ(c.maps.bad[i], 0) << i;
    } else {
      EXPECT_NE(c.maps.bad[i] & expected, 0) << i;
    }
  }
}

// A wrong frame of few has to be found although it pulls the fit.
TEST(CalibrationFit, FindsAMovedFrameOfFew) {
  for (const int count : {8, 12, 20}) {
    SimulatedStack stack{SimulatedSensor({})};
    stack.add_darks(2);
    for (int i = 0; i < count; ++i) {
      const double angle = 180.0 * i / count;
      stack.add(FrameKind::polarized, angle, polarized_light(0.8, angle + (i == 3 ? 2 : 0)));
    }
    const Calibration c = stack.fit();
    for (std::size_t i = 0; i < c.frames.size(); ++i) {
      EXPECT_EQ(c.frames[i].used, i != 5) << count << " frames, " << i;
    }
  }
}

TEST(CalibrationFit, FindsAnglesThatNobodyTold) {
  for (const bool with_flats : {false, true}) {
    SimulatedStack stack{SimulatedSensor({.class_turns = {1.5, -1, 0.5, -1}})};
    stack.add_darks(8);
    std::vector<double> angles;
    for (int i = 0; i < 72; ++i) {
      angles.push_back(7 + 9.1 * i);
      // Brightness that follows the angle, which only flats can tell from the sensor.
      const double s0 = 0.8 * (1 + (with_flats ? 0.02 * std::cos(angles[0] * i) : 0.03 * i / 71));
      stack.add(FrameKind::polarized, i == 0 ? angles[0] : std::numeric_limits<double>::quiet_NaN(),
                polarized_light(s0, angles.back()));
    }
    if (with_flats) stack.add_flats(8);
    FitSettings settings = stack.settings();
    settings.angles_known = false;
    const Calibration c = stack.fit(settings);
    expect_calibrated(stack, c, noise_alone(angles));
    EXPECT_TRUE(c.angles_solved);
    for (std::size_t i = 0; i < angles.size(); ++i) {
      EXPECT_NEAR(std::remainder(c.frames[8 + i].angle - angles[i], 180), 0, 0.06) << i;
    }
  }
}

TEST(CalibrationFit, HasTheSameBytesOnSeveralThreads) {
  SimulatedStack stack{SimulatedSensor({.width = 70, .height = 38})};
  stack.add_darks(2);
  stack.add_turn(12);
  FitSettings settings = stack.settings();
  settings.threads = 1;
  const Calibration one = stack.fit(settings);
  settings.threads = 3;
  const Calibration three = stack.fit(settings);
  EXPECT_EQ(one.maps.gain, three.maps.gain);
  EXPECT_EQ(one.maps.orientation_error, three.maps.orientation_error);
  EXPECT_EQ(one.maps.bad, three.maps.bad);
}

TEST(CalibrationFit, RefusesInWords) {
  struct Refusal {
    const char* line;
    std::function<void(SimulatedStack&)> fill;
    Mosaic told{};
  };
  const auto turned = [](double sense, double offset) {
    return [=](SimulatedStack& stack) {
      for (int i = 0; i < 12; ++i) {
        stack.add(FrameKind::polarized, sense * 15 * i + offset, polarized_light(0.8, 15 * i));
      }
    };
  };
  const auto at = [](std::vector<double> angles, double s0 = 0.8) {
    return [=](SimulatedStack& stack) {
      for (const double angle : angles) stack.add_polarized(angle, s0);
    };
  };
  const Refusal refusals[] = {
      {"no polarized frames", [](SimulatedStack& stack) { stack.add_darks(3); }},
      {"have 2 different angles", at({0, 90, 180, 270})},
      {"too close to each other", at({0, 4, 8, 11})},
      {"cannot be used: clipped", at({0, 45, 90, 135}, 1.5)},
      {"is no number", at({0, 45, std::numeric_limits<double>::quiet_NaN()})},
      {"the phase of 0 degrees would fit", turned(1, 0), {kv_polar_phase_45, 0, 0}},
      {"the phase of 0 degrees would fit", turned(1, 0), {kv_polar_phase_90, 0, 0}},
      {"counted the other way round", turned(-1, 0)},
      {"-33 degrees added", turned(1, 33)},
  };
  for (const Refusal& refusal : refusals) {
    SimulatedStack stack{SimulatedSensor({.width = 32, .height = 32})};
    refusal.fill(stack);
    EXPECT_PRED2(contains, error_of([&] { stack.fit({.mosaic = refusal.told}); }), refusal.line);
  }
}

TEST(CalibrationFit, RefusesFramesOfOtherSizesAndDepths) {
  SimulatedStack stack{SimulatedSensor({.width = 32, .height = 32})};
  stack.add_turn(12);
  stack.frames[3] = make_frame(32, 30, 12);
  stack.frames[4].bit_depth = 16;
  const Calibration c = stack.fit();
  EXPECT_PRED2(contains, c.frames[3].refusal,
               "32 x 30 pixels of 12 bits; the first frame has 32 x 32");
  EXPECT_PRED2(contains, c.frames[4].refusal, "of 16 bits");
  EXPECT_PRED2(contains, error_of([&] {
                 CalibrationFit fit(stack.settings());
                 fit.add(make_frame(33, 32, 12), {});
               }),
               "must be even");
}

TEST(CalibrationFit, WantsTheSameFrameAgain) {
  SimulatedStack stack{SimulatedSensor({.width = 32, .height = 32})};
  for (int i = 0; i < 12; ++i) stack.add_polarized(15 * i, i == 4 ? 1.5 : 0.8);
  const auto finish = [&](const FrameAgain& again) {
    return error_of([&] {
      CalibrationFit fit(stack.settings());
      for (std::size_t i = 0; i < 12; ++i) fit.add(stack.frames[i], stack.kinds[i]);
      fit.finish(again);
    });
  };
  EXPECT_EQ(finish([&](std::size_t index) { return stack.frames[index].view(); }), "");
  EXPECT_PRED2(contains, finish({}), "has to be read again");
  EXPECT_PRED2(contains, finish([&](std::size_t) { return stack.frames[5].view(); }),
               "frame 4 came with other samples");
}

}  // namespace
}  // namespace kv::test

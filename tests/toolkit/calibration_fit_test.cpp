#include "kv/calibration/calibration_fit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numbers>

#include "error_of.h"
#include "kv/calibration/analyser.h"
#include "simulated_stack.h"

using namespace kv::polarization;

namespace {

/// How far corrected cells are from known light, over the good cells of a sensor and many angles.
struct CellErrors {
  double dolp_bias = 0;
  double angle_bias = 0;  // degrees
  double dolp_rms = 0;
  double angle_rms = 0;  // degrees
  std::size_t cells = 0;
};

/// Light of a DoLP of 1 through the true sensor, without noise, and back through the calibration.
CellErrors cell_errors(const SimulatedSensor& sensor, const Calibration& calibration) {
  const SensorTruth& truth = sensor.truth();
  const CellAngles nominal = cell_angles(sensor.settings().mosaic);
  const int width = sensor.settings().width;
  CellErrors errors;
  double count = 0;
  for (int row = 0; row < sensor.settings().height; row += 2) {
    for (int column = 0; column < width; column += 2) {
      CellResponse found{};
      std::array<std::size_t, 4> pixels{};
      bool good = true;
      for (std::size_t place = 0; place < 4; ++place) {
        const std::size_t pixel = pixel_count(width, row + static_cast<int>(place / 2)) +
                                  static_cast<std::size_t>(column) + place % 2;
        pixels[place] = pixel;
        const PixelMaps& maps = calibration.maps;
        good = good && maps.bad[pixel] == 0 && truth.flaws[pixel] == 0;
        found[place] = {maps.gain[pixel], maps.diattenuation[pixel],
                        nominal[place] + static_cast<double>(maps.orientation[pixel])};
      }
      if (!good) continue;
      ++errors.cells;
      const StokesMatrix matrix = stokes_matrix(found);
      for (double angle = 3; angle < 180; angle += 22.5) {
        CellSamples samples{};
        for (std::size_t place = 0; place < 4; ++place) {
          const std::size_t pixel = pixels[place];
          const double between = (angle - truth.orientation[pixel]) * std::numbers::pi / 90;
          samples[place] =
              1000 * truth.gain[pixel] / 2 * (1 + truth.diattenuation[pixel] * std::cos(between));
        }
        const StokesValues stokes = stokes_of_cell(matrix, samples);
        const double dolp = std::hypot(stokes[1], stokes[2]) / stokes[0] - 1;
        const double turn =
            std::remainder(std::atan2(stokes[2], stokes[1]) * 90 / std::numbers::pi - angle, 180);
        errors.dolp_bias += dolp;
        errors.angle_bias += turn;
        errors.dolp_rms += dolp * dolp;
        errors.angle_rms += turn * turn;
        count += 1;
      }
    }
  }
  errors.dolp_bias /= count;
  errors.angle_bias /= count;
  errors.dolp_rms = std::sqrt(errors.dolp_rms / count);
  errors.angle_rms = std::sqrt(errors.angle_rms / count);
  return errors;
}

std::ostream& operator<<(std::ostream& stream, const CellErrors& e) {
  return stream << "DoLP " << e.dolp_bias << " bias, " << e.dolp_rms << " rms; angle "
                << e.angle_bias << " bias, " << e.angle_rms << " rms; " << e.cells << " cells";
}

std::size_t used(const Calibration& calibration) {
  std::size_t count = 0;
  for (const FrameRecord& record : calibration.frames) count += record.used ? 1 : 0;
  return count;
}

TEST(CalibrationFit, FindsTheSensor) {
  SimulatedStack stack{SimulatedSensor({})};
  stack.add_dark(8);
  stack.add_turn(72);
  stack.add_flat(8);
  const Calibration c = stack.fit();
  std::cerr << cell_errors(stack.sensor, c) << "\n";
  std::cerr << "offset " << c.source_offset << " cond " << c.condition << " gain " << c.noise.gain
            << " (" << 4031 / 10000.0 << ") read " << c.noise.read_noise << "\n";
  for (auto& k : c.classes) {
    std::cerr << k.nominal_angle << " n " << k.pixels << " black " << k.black.value << " gain "
              << k.gain.value << "+-" << k.gain.error << " sc " << k.gain_scatter << " D "
              << k.diattenuation.value << " sc " << k.diattenuation_scatter << " a "
              << k.orientation.value << "+-" << k.orientation.error << " sc "
              << k.orientation_scatter << "\n";
  }
  for (auto& f : c.frames) {
    if (!f.used || f.angle < 30)
      std::cerr << f.name << " " << f.angle << " " << f.used << " " << f.refusal << " level "
                << f.level << " dev " << f.angle_deviation << " ex " << f.excess << "\n";
  }
  for (auto& f : c.findings)
    std::cerr << f.name << " " << f.found << " " << f.expected << " " << f.unit << " " << f.good
              << " " << f.verdict << "\n";
  std::cerr << "errors " << c.maps.gain_error[5000] << " " << c.maps.diattenuation_error[5000]
            << " " << c.maps.orientation_error[5000] << "\n";
  EXPECT_EQ(used(c), 88u);
}

}  // namespace

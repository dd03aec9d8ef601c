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

TEST(CalibrationFit, Try) {
  struct Try {
    const char* name;
    SimulatedSensorSettings sensor;
    std::function<void(SimulatedStack&)> make;
    FitSettings settings;
  };
  SimulatedSensorSettings plain, bad, b8, b16, phase, origin;
  bad.bad_share = 0.01;
  b8.bit_depth = 8;
  b8.black_level = 4;
  b8.black_scatter = .1;
  b16.bit_depth = 16;
  b16.black_level = 1000;
  b16.black_scatter = 16;
  phase.mosaic.phase = kv_polar_phase_135;
  origin.mosaic = {kv_polar_phase_90, 3, 5};
  SimulatedSensorSettings turned;
  turned.class_turns = {1.5, -1, .5, -1};
  turned.class_gains = {1.02, 1, .97, 1.01};
  const auto standard = [](SimulatedStack& s) {
    s.add_dark(8);
    s.add_turn(72);
    s.add_flat(8);
  };
  const auto drift = [](SimulatedStack& s) {
    s.add_dark(8);
    for (int i = 0; i < 72; ++i) s.add_polarized(5 * i, .8 * (1 + .05 * i / 71.));
  };
  const auto wave = [](SimulatedStack& s) {
    s.add_dark(8);
    for (int i = 0; i < 72; ++i) s.add_polarized(5 * i, .8 * (1 + .025 * std::cos(i * .7)));
  };
  const auto late_dark = [](SimulatedStack& s) {
    s.add_turn(72);
    s.add_dark(8);
  };
  const auto no_dark = [](SimulatedStack& s) { s.add_turn(72); };
  const auto four = [](SimulatedStack& s) {
    s.add_dark(8);
    for (double a : {0., 45., 90., 135.}) s.add_polarized(a);
  };
  const auto three = [](SimulatedStack& s) {
    s.add_dark(8);
    for (double a : {0., 60., 120.}) s.add_polarized(a);
  };
  const auto odd = [](SimulatedStack& s) {
    s.add_dark(1);
    for (double a : {0., 30., 50., 95., 110., 130., 171., 20., 77.}) s.add_polarized(a, .6, 7.5);
  };
  const auto messy = [](SimulatedStack& s) {
    s.add_dark(8);
    for (int i = 0; i < 72; ++i) {
      if (i == 10 || i == 40) {
        s.add_polarized(5 * i, 1.3);
        continue;
      }
      if (i == 20) {
        s.add(FrameKind::polarized, 5 * i, polarized_light(.8, 5 * i + 4));
        continue;
      }
      if (i == 30) {
        s.add(FrameKind::polarized, 5 * i, polarized_light(.8, 5 * i, .2));
        continue;
      }
      if (i == 33) {
        s.add(FrameKind::polarized, 5 * i, polarized_light(.05, 5 * i, 0));
        continue;
      }
      if (i == 36) {
        s.add(FrameKind::polarized, 5 * i, unpolarized_light(.8));
        continue;
      }
      s.add_polarized(5 * i, .8 * (1 + .05 * i / 71.));
    }
    s.add_flat(8);
  };
  FitSettings black64;
  black64.black_level = 64;
  FitSettings unknown;
  unknown.angles_known = false;
  const Try tries[] = {{"plain", plain, standard, {}},
                       {"bad", bad, standard, {}},
                       {"b8", b8, standard, {}},
                       {"b16", b16, standard, {}},
                       {"phase", phase, standard, {}},
                       {"origin", origin, standard, {}},
                       {"turned", turned, standard, {}},
                       {"drift", plain, drift, {}},
                       {"wave", turned, wave, {}},
                       {"late", plain, late_dark, {}},
                       {"no dark", plain, no_dark, black64},
                       {"four", plain, four, {}},
                       {"three", plain, three, {}},
                       {"odd", plain, odd, {}},
                       {"messy", bad, messy, {}},
                       {"unknown", turned, standard, unknown},
                       {"unknown drift", plain, drift, unknown},
                       {"unknown wave", plain, wave, unknown}};
  for (const Try& t : tries) {
    std::cerr << "=== " << t.name << "\n";
    SimulatedStack stack{SimulatedSensor(t.sensor)};
    t.make(stack);
    try {
      const Calibration c = stack.fit(t.settings);
      std::size_t bads = 0, missed = 0, flawed = 0;
      for (std::size_t i = 0; i < c.maps.bad.size(); ++i) {
        const bool flaw = stack.sensor.truth().flaws[i] != 0;
        bads += c.maps.bad[i] != 0 && !flaw;
        missed += c.maps.bad[i] == 0 && flaw;
        flawed += flaw;
      }
      double angle = 0;
      for (std::size_t i = 0; i < c.maps.bad.size(); ++i) {
        const CellAngles nominal = cell_angles(c.mosaic);
        const double d = std::remainder(
            stack.sensor.truth().orientation[i] - nominal[2 * (i / 128 % 2) + i % 2], 180);
        if (c.maps.bad[i] == 0) angle += d;
      }
      std::cerr << cell_errors(stack.sensor, c) << " own zero " << angle / c.maps.bad.size()
                << "\n";
      std::cerr << "offset " << c.source_offset << " gain " << c.noise.gain << " read "
                << c.noise.read_noise << " flawed " << flawed << " missed " << missed << " false "
                << bads << " err " << c.maps.gain_error[5000] << " "
                << c.maps.diattenuation_error[5000] << " " << c.maps.orientation_error[5000]
                << "\n";
      for (auto& f : c.frames)
        if (!f.used) std::cerr << f.name << " " << f.angle << " " << f.refusal << "\n";
      for (auto& f : c.findings)
        std::cerr << "   " << (f.good ? "+ " : "- ") << f.name << ": " << f.found << " / "
                  << f.expected << " " << f.unit << ": " << f.verdict << "\n";
    } catch (const Fault& fault) {
      std::cerr << fault.what() << "\n";
    }
  }
}

}  // namespace

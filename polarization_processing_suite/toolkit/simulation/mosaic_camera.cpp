// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/simulation/mosaic_camera.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "toolkit/simulation/random.h"

namespace kv::polarization {
namespace {

/// Malus' law for partially polarized light behind an ideal polarizer.
class Polarizer {
 public:
  explicit Polarizer(int degrees)
      : cos2_(std::cos(degrees * std::numbers::pi / 90)),
        sin2_(std::sin(degrees * std::numbers::pi / 90)) {}
  double pass(const Stokes& light) const {
    return (light.s0 + cos2_ * light.s1 + sin2_ * light.s2) / 2;
  }

 private:
  double cos2_;
  double sin2_;
};

}  // namespace

Frame photograph(const LightField& light, int width, int height, const CameraSettings& settings) {
  const auto angles = cell_angles(settings.phase);
  const std::array<Polarizer, 4> cell = {Polarizer(angles[0]), Polarizer(angles[1]),
                                         Polarizer(angles[2]), Polarizer(angles[3])};
  Frame frame = make_frame(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height),
                           settings.bit_depth);
  const double limit = full_scale(settings.bit_depth);
  const double counts = limit - settings.black_level;
  std::uint64_t index = 0;
  for (int row = 0; row < height; ++row) {
    for (int column = 0; column < width; ++column, ++index) {
      const Polarizer& polarizer = cell[static_cast<std::size_t>(2 * (row % 2) + column % 2)];
      double electrons = polarizer.pass(light(column, row)) * settings.full_well;
      if (settings.noise) {
        // Shot noise has the variance of the signal itself.
        const double variance = electrons + settings.read_noise * settings.read_noise;
        electrons += std::sqrt(variance) * random_normal(settings.seed, index);
      }
      const double level = electrons / settings.full_well * counts + settings.black_level;
      frame.samples[index] = static_cast<std::uint16_t>(std::lround(std::clamp(level, 0.0, limit)));
    }
  }
  return frame;
}

Frame photograph(const Scene& scene, int width, int height, const CameraSettings& settings) {
  const LightField light = [&scene](double column, double row) { return scene.at(column, row); };
  return photograph(light, width, height, settings);
}

}  // namespace kv::polarization

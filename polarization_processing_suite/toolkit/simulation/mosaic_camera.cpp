#include "toolkit/simulation/mosaic_camera.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kv::polarization {
namespace {

/// The finalizer of splitmix64 (Steele, Lea and Flood, 2014): a random word for every counter. The
/// standard distributions would give other frames with other standard libraries.
std::uint64_t random_word(std::uint64_t counter) {
  std::uint64_t word = counter * 0x9E3779B97F4A7C15;
  word = (word ^ (word >> 30)) * 0xBF58476D1CE4E5B9;
  word = (word ^ (word >> 27)) * 0x94D049BB133111EB;
  return word ^ (word >> 31);
}

/// A number of mean 0 and variance 1, close to normally distributed: the sum of eight uniform
/// 16-bit numbers, which is within 4.9 standard deviations.
double random_normal(std::uint64_t seed, std::uint64_t index) {
  const std::uint64_t start = random_word(seed) + 2 * index;
  std::int64_t sum = 0;
  for (const std::uint64_t word : {random_word(start), random_word(start + 1)}) {
    for (int shift = 0; shift < 64; shift += 16) {
      sum += static_cast<std::int64_t>((word >> shift) & 0xFFFF);
    }
  }
  constexpr double mean = 8 * 65535 / 2.0;
  // A uniform whole number from 0 to 65535 has the variance (65536^2 - 1) / 12.
  constexpr double variance = 8 * (65536.0 * 65536.0 - 1) / 12;
  static const double deviation = std::sqrt(variance);
  return (static_cast<double>(sum) - mean) / deviation;
}

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

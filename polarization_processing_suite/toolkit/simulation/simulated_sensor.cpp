// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/simulation/simulated_sensor.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "toolkit/simulation/random.h"

namespace kv::polarization {
namespace {

/// Each property of a sensor, and the noise of each frame, has random numbers of its own.
enum Stream : std::uint64_t { gains, diattenuations, orientations, blacks, flaws, frames };

std::uint64_t stream_seed(std::uint64_t seed, std::uint64_t stream) {
  return random_word(seed) + stream;
}

constexpr double kNoisyFactor = 8;   // of a noisy pixel's noise over what it should be
constexpr double kHotElectrons = 2;  // of the full well, in the dark

double twice_in_radians(double degrees) { return degrees * std::numbers::pi / 90; }

PixelFlaw flaw_of(double number, double share) {
  if (number < share / 3) return PixelFlaw::dead;
  if (number < share * 2 / 3) return PixelFlaw::hot;
  return number < share ? PixelFlaw::noisy : PixelFlaw::none;
}

}  // namespace

SensorLight polarized_light(double s0, double angle, double gradient) {
  const double twice = twice_in_radians(angle);
  return {{s0, s0 * std::cos(twice), s0 * std::sin(twice)}, gradient};
}

SensorLight unpolarized_light(double s0, double gradient) { return {{s0, 0, 0}, gradient}; }

SimulatedSensor::SimulatedSensor(const SimulatedSensorSettings& settings) : settings_(settings) {
  const std::size_t pixels = pixel_count(settings.width, settings.height);
  for (Buffer<float>* map : {&truth_.black, &truth_.gain, &truth_.diattenuation,
                             &truth_.orientation, &gain_cos_, &gain_sin_}) {
    map->resize(pixels);
  }
  truth_.flaws.resize(pixels);
  const CellAngles angles = cell_angles(settings.mosaic);
  const auto normal = [&](Stream stream, std::size_t index) {
    return random_normal(stream_seed(settings.seed, stream), index);
  };
  std::size_t index = 0;
  for (int row = 0; row < settings.height; ++row) {
    for (int column = 0; column < settings.width; ++column, ++index) {
      const int nominal = angles[static_cast<std::size_t>(2 * (row % 2) + column % 2)];
      const auto number = static_cast<std::size_t>(nominal / 45);
      const double gain =
          settings.class_gains[number] * (1 + settings.gain_scatter * normal(gains, index));
      const double diattenuation =
          std::min(1.0, settings.diattenuation +
                            settings.diattenuation_scatter * normal(diattenuations, index));
      const double orientation = nominal + settings.class_turns[number] +
                                 settings.orientation_scatter * normal(orientations, index);
      const double twice = twice_in_radians(orientation);
      truth_.gain[index] = static_cast<float>(gain);
      truth_.diattenuation[index] = static_cast<float>(diattenuation);
      truth_.orientation[index] = static_cast<float>(orientation);
      truth_.black[index] =
          static_cast<float>(settings.black_level + settings.black_scatter * normal(blacks, index));
      truth_.flaws[index] = static_cast<std::uint8_t>(
          flaw_of(random_uniform(stream_seed(settings.seed, flaws), index), settings.bad_share));
      gain_cos_[index] = static_cast<float>(gain * diattenuation * std::cos(twice));
      gain_sin_[index] = static_cast<float>(gain * diattenuation * std::sin(twice));
    }
  }
}

double SimulatedSensor::electrons_of(std::size_t index, const Stokes& light) const {
  const auto flaw = static_cast<PixelFlaw>(truth_.flaws[index]);
  if (flaw == PixelFlaw::dead) return 0;
  const double passed =
      (truth_.gain[index] * light.s0 + gain_cos_[index] * light.s1 + gain_sin_[index] * light.s2) /
      2;
  return settings_.full_well * (passed + (flaw == PixelFlaw::hot ? kHotElectrons : 0));
}

Frame SimulatedSensor::take(const SensorLight& light, std::uint64_t number) const {
  return take(
      [&](double column, double) {
        const double brightness = 1 + light.gradient * ((column + 0.5) / settings_.width - 0.5);
        return Stokes{brightness * light.stokes.s0, brightness * light.stokes.s1,
                      brightness * light.stokes.s2};
      },
      number);
}

Frame SimulatedSensor::take(const LightField& light, std::uint64_t number) const {
  Frame frame = make_frame(static_cast<std::uint64_t>(settings_.width),
                           static_cast<std::uint64_t>(settings_.height), settings_.bit_depth);
  const double limit = full_scale(settings_.bit_depth);
  const double counts_per_electron = (limit - settings_.black_level) / settings_.full_well;
  const double read_variance = settings_.read_noise * settings_.read_noise;
  const std::uint64_t seed = stream_seed(settings_.seed, frames + number);
  std::size_t index = 0;
  for (int row = 0; row < settings_.height; ++row) {
    for (int column = 0; column < settings_.width; ++column, ++index) {
      double electrons = electrons_of(index, light(column, row));
      if (settings_.temporal_noise) {
        const bool noisy = truth_.flaws[index] == static_cast<std::uint8_t>(PixelFlaw::noisy);
        electrons += (noisy ? kNoisyFactor : 1) * std::sqrt(electrons + read_variance) *
                     random_normal(seed, index);
      }
      const double level = truth_.black[index] + electrons * counts_per_electron;
      frame.samples[index] = static_cast<std::uint16_t>(std::lround(std::clamp(level, 0.0, limit)));
    }
  }
  return frame;
}

}  // namespace kv::polarization

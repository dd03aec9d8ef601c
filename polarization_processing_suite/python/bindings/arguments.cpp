// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "python/bindings/arguments.h"

#include <cmath>
#include <string>

#include "toolkit/api/memory_checks.h"

namespace kv::polarization::python {

Mosaic mosaic_of(int phase, const Origin& origin) {
  const std::optional<PolarPhase> known = phase_at(phase);
  if (!known) {
    refuse(
        "the phase must be 0, 45, 90 or 135, the angle of the polarizer before the sensor's "
        "top left pixel, not " +
        std::to_string(phase));
  }
  const auto [column, row] = origin;
  if (column < 0 || row < 0) {
    refuse(
        "the origin must be the sensor's column and row of the frame's first pixel, from 0 up, "
        "not (" +
        std::to_string(column) + ", " + std::to_string(row) + ")");
  }
  return {.phase = *known, .x_origin = column, .y_origin = row};
}

SampleLayout layout_of(std::optional<int> bit_depth, bool left_aligned) {
  return {bit_depth, left_aligned ? SampleAlignment::left : SampleAlignment::right};
}

std::optional<std::uint16_t> clip_level_of(const GivenClipLevel& given) {
  if (!given) return std::nullopt;
  if (*given < 1 || *given > 65535) {
    refuse("the clip level must be 1 to 65535, a sample, not " + std::to_string(*given));
  }
  return static_cast<std::uint16_t>(*given);
}

std::optional<SensorNoise> noise_of(const std::optional<NoiseNumbers>& given) {
  if (!given) return std::nullopt;
  const auto [gain, read_noise] = *given;
  if (!(gain > 0) || !std::isfinite(gain) || !(read_noise >= 0) || !std::isfinite(read_noise)) {
    refuse(
        "the noise must have a gain above 0, in counts per electron, and a read noise of 0 or "
        "more electrons, not " +
        std::to_string(gain) + " and " + std::to_string(read_noise));
  }
  return SensorNoise{gain, read_noise};
}

int thread_count(std::int64_t threads) {
  constexpr std::int64_t most_known = 1024;
  if (threads < 0 || threads > most_known) {
    refuse("threads must be 1 to 1024, or None for all, not " + std::to_string(threads));
  }
  return static_cast<int>(threads);
}

}  // namespace kv::polarization::python

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/api/maps/sample_loading.h"

#include <algorithm>

#include "toolkit/api/maps/compensation.h"
#include "toolkit/api/maps/rescue.h"

namespace kv::polarization {
namespace {

void subtract_black(const std::uint16_t* __restrict samples, int count, float black_level,
                    float* __restrict values) {
  for (int i = 0; i < count; ++i) values[i] = static_cast<float>(samples[i]) - black_level;
}

void find_clipped(const std::uint16_t* __restrict samples, int count, int clip_level,
                  std::uint8_t* __restrict flags) {
  for (int i = 0; i < count; ++i) {
    flags[i] = static_cast<std::uint8_t>(samples[i] >= clip_level ? quality::clipped : 0);
  }
}

void find_bad(const std::uint8_t* __restrict bad, int count, std::uint8_t* __restrict flags) {
  for (int i = 0; i < count; ++i) {
    flags[i] = static_cast<std::uint8_t>(flags[i] | (bad[i] != 0 ? quality::bad_pixel : 0));
  }
}

void find_variances(const float* __restrict values, int count, const SensorNoise& noise,
                    float* __restrict variances) {
  const float dark = noise.dark_variance();
  for (int i = 0; i < count; ++i) {
    variances[i] = noise.gain * (values[i] > 0 ? values[i] : 0) + dark;
  }
}

void join_flags(const std::uint8_t* __restrict upper, const std::uint8_t* __restrict lower,
                int count, std::uint8_t* __restrict flags) {
  for (int i = 0; i < count; ++i) {
    flags[i] = static_cast<std::uint8_t>(upper[i] | upper[i + 1] | lower[i] | lower[i + 1]);
  }
}

}  // namespace

ChunkLoader::ChunkLoader(const FramePart& frame, const Mosaic& mosaic, const MapSettings& settings,
                         Needs needs)
    : frame_(frame),
      settings_(settings),
      bad_start_(pixel_count(settings.samples.bad_pixels.width, mosaic.y_origin) +
                 static_cast<std::size_t>(mosaic.x_origin)),
      clip_level_(settings.samples.clip_level.value_or(
          static_cast<std::uint16_t>(full_scale(frame.bit_depth)))),
      needs_(needs) {}

void ChunkLoader::load(int row, int column, int count, CellChunk& chunk) const {
  chunk.row = row;
  chunk.column = column;
  chunk.count = count;
  load_line(row, chunk, chunk.upper);
  load_line(mirrored(row + 1, frame_.height), chunk, chunk.lower);
  if (needs_.flags) {
    join_flags(chunk.upper.flags.data(), chunk.lower.flags.data(), count, chunk.flags.data());
  }
  const auto of_line = [](const auto& upper, const auto& lower) {
    return std::array{upper.data(), upper.data() + 1, lower.data(), lower.data() + 1};
  };
  chunk.values = of_line(chunk.upper.values, chunk.lower.values);
  chunk.variances = of_line(chunk.upper.variances, chunk.lower.variances);
  chunk.has_changed = false;
  chunk.has_rescued = false;
  if (settings_.samples.rescue) rescue(chunk);
  if (settings_.compensation) compensate(frame_, settings_, chunk);
}

void ChunkLoader::load_line(int row, const CellChunk& chunk, SampleLine& line) const {
  const bool at_edge = chunk.column + chunk.count == frame_.width;
  load_samples({row, chunk.column, chunk.count + (at_edge ? 0 : 1)}, 0, line);
  if (at_edge) load_samples({row, frame_.width - 2, 1}, chunk.count, line);
}

void ChunkLoader::load_samples(const Run& run, int place, SampleLine& line) const {
  const auto column = static_cast<std::size_t>(run.column);
  const std::uint16_t* samples = frame_.samples + pixel_count(frame_.width, run.row) + column;
  const SampleSettings& settings = settings_.samples;
  float* values = line.values.data() + place;
  subtract_black(samples, run.count, settings.black_level, values);
  if (needs_.variances) {
    find_variances(values, run.count, *settings.noise, line.variances.data() + place);
  }
  if (!needs_.flags) return;
  std::uint8_t* flags = line.flags.data() + place;
  find_clipped(samples, run.count, clip_level_, flags);
  const BadPixels& bad = settings.bad_pixels;
  if (bad.bytes.empty()) return;
  find_bad(bad.bytes.data() + bad_start_ + pixel_count(bad.width, run.row) + column, run.count,
           flags);
}

}  // namespace kv::polarization

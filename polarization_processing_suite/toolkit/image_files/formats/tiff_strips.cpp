// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/formats/tiff_strips.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace kv::polarization {
namespace {

/// Of each sample to the one so many before it. The first ones stay. Samples may lie at any
/// address.
template <class Sample>
void put_differences(const std::uint8_t* from, std::size_t count, std::size_t distance,
                     std::uint8_t* to) {
  // Compilers make vectors of a loop of constant length over memory that nothing else points to.
  constexpr std::size_t run = 32;
  std::array<Sample, run> here{};
  std::array<Sample, run> before{};
  std::array<Sample, run> differences;
  const std::size_t first = std::min(distance, count);
  std::memcpy(to, from, first * sizeof(Sample));
  for (std::size_t i = first; i < count; i += run) {
    const std::size_t size = std::min(run, count - i) * sizeof(Sample);
    std::memcpy(here.data(), from + i * sizeof(Sample), size);
    std::memcpy(before.data(), from + (i - distance) * sizeof(Sample), size);
    for (std::size_t k = 0; k < run; ++k) {
      differences[k] = static_cast<Sample>(here[k] - before[k]);
    }
    std::memcpy(to + i * sizeof(Sample), differences.data(), size);
  }
}

/// The heaviest byte of each number, then the next one of each, and so on.
void sort_by_weight(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t weight = 0; weight < sizeof(float); ++weight) {
      to[weight * count + i] = from[sizeof(float) * i + sizeof(float) - 1 - weight];
    }
  }
}

}  // namespace

TiffStripEncoder::TiffStripEncoder(Compression compression, TiffPredictor predictor,
                                   std::size_t row_samples, std::size_t sample_size,
                                   std::size_t channels)
    : predictor_(predictor),
      row_samples_(row_samples),
      sample_size_(sample_size),
      channels_(channels),
      encoder_(compression) {}

std::span<const std::uint8_t> TiffStripEncoder::encode(const std::uint8_t* pixels,
                                                       std::size_t rows) {
  const std::size_t row_size = row_samples_ * sample_size_;
  if (predictor_ == TiffPredictor::none) return encoder_.encode({pixels, rows * row_size}, true);
  strip_.resize(rows * row_size);
  for (std::size_t i = 0; i < rows; ++i)
    predict(pixels + i * row_size, strip_.data() + i * row_size);
  return encoder_.encode(strip_, true);
}

void TiffStripEncoder::predict(const std::uint8_t* row, std::uint8_t* to) {
  if (predictor_ == TiffPredictor::floating_point) {
    weights_.resize(row_samples_ * sample_size_);
    sort_by_weight(row, row_samples_, weights_.data());
    put_differences<std::uint8_t>(weights_.data(), weights_.size(), channels_, to);
  } else if (sample_size_ == 2) {
    put_differences<std::uint16_t>(row, row_samples_, channels_, to);
  } else {
    put_differences<std::uint8_t>(row, row_samples_, channels_, to);
  }
}

}  // namespace kv::polarization

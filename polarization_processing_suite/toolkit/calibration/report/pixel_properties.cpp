// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/report/pixel_properties.h"

#include <cmath>

namespace kv::polarization {
namespace {

void summarize(PropertySample& sample, double squared_errors) {
  const auto count = static_cast<double>(sample.values.size());
  if (count == 0) return;
  for (const float value : sample.values) sample.mean += value / count;
  double squares = 0;
  for (const float value : sample.values) squares += (value - sample.mean) * (value - sample.mean);
  if (count > 1) sample.scatter = std::sqrt(squares / (count - 1));
  sample.noise = std::sqrt(squared_errors / count);
}

}  // namespace

std::array<PropertySample, 4> samples_of(const Calibration& calibration,
                                         const PixelProperty& property) {
  const Buffer<float>& values = calibration.maps.*property.values;
  const Buffer<float>& errors = calibration.maps.*property.errors;
  std::array<PropertySample, 4> samples;
  std::array<double, 4> squared_errors{};
  for (PropertySample& sample : samples) sample.values.reserve(values.size() / 4);
  for_each_pixel(calibration, [&](std::size_t pixel_class, int, int, std::size_t index) {
    const double error = errors[index];
    if (calibration.maps.bad[index] != 0 || !std::isfinite(values[index]) ||
        !std::isfinite(error)) {
      return;
    }
    samples[pixel_class].values.push_back(values[index]);
    squared_errors[pixel_class] += error * error;
  });
  for (std::size_t i = 0; i < samples.size(); ++i) summarize(samples[i], squared_errors[i]);
  return samples;
}

}  // namespace kv::polarization

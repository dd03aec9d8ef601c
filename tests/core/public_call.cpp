// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "public_call.h"

#include <gtest/gtest.h>

namespace kv::test {

Processor::Processor() {
  initialize();
  EXPECT_EQ(create(handle_), kv_status_ok);
}

Processor::~Processor() {
  EXPECT_EQ(destroy(handle_), kv_status_ok);
  terminate();
}

ProcessorStatus get_weights(PolarizationProcessor* handle, std::array<Weights, 4>& weights) {
  return kv_polarization_processor_get_custom_calibration_coefficients(
      handle, weights[0].data(), weights[1].data(), weights[2].data(), weights[3].data());
}

ProcessorStatus set_weights(PolarizationProcessor* handle, const std::array<Weights, 4>& weights) {
  return kv_polarization_processor_set_custom_calibration_coefficients(
      handle, weights[0].data(), weights[1].data(), weights[2].data(), weights[3].data());
}

ProcessorStatus transform(PolarizationProcessor* handle, const Arguments& a) {
  return kv_polarization_processor_transform(
      handle, a.polar_phase, a.input, a.x_origin, a.y_origin, a.width, a.height, a.bit_depth,
      a.output_max, a.normalized_stokes, a.intensity, a.stokes_s1, a.stokes_s2, a.azimuth, a.dolp);
}

Planes transformed(const Processor& processor, Arguments arguments,
                   const std::vector<std::uint16_t>& frame, OutputSet wanted) {
  Planes planes(frame.size());
  EXPECT_EQ(frame.size(), static_cast<std::size_t>(arguments.width * arguments.height));
  arguments.input = frame.data();
  planes.hand_to(arguments, wanted);
  EXPECT_EQ(transform(processor.handle(), arguments), kv_status_ok);
  return planes;
}

}  // namespace kv::test

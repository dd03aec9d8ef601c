// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "kevrinth_qrm_polarization_processor.h"
#include "planes.h"

namespace kv::test {

inline ProcessorStatus initialize() { return kv_polarization_processor_module_initialize(); }
inline ProcessorStatus terminate() { return kv_polarization_processor_module_terminate(); }
inline ProcessorStatus create(PolarizationProcessor*& handle) {
  return kv_polarization_processor_create_polarization_processor(&handle);
}
inline ProcessorStatus destroy(PolarizationProcessor* handle) {
  return kv_polarization_processor_destroy_polarization_processor(handle);
}

/// The module initialised, and one processor, for the length of a scope.
class Processor {
 public:
  Processor();
  ~Processor();
  Processor(const Processor&) = delete;
  Processor& operator=(const Processor&) = delete;

  PolarizationProcessor* handle() const { return handle_; }

 private:
  PolarizationProcessor* handle_ = nullptr;
};

/// The 16 weights of one polarizer.
using Weights = std::array<float, 16>;

ProcessorStatus get_weights(PolarizationProcessor* handle, std::array<Weights, 4>& weights);
ProcessorStatus set_weights(PolarizationProcessor* handle, const std::array<Weights, 4>& weights);

/// The arguments of a transform but the handle.
struct Arguments {
  PolarPhase polar_phase = kv_polar_phase_0;
  const std::uint16_t* input = nullptr;
  std::int32_t x_origin = 0;
  std::int32_t y_origin = 0;
  std::int32_t width = 2;
  std::int32_t height = 2;
  std::uint32_t bit_depth = 16;
  std::uint16_t output_max = 65535;
  float* normalized_stokes = nullptr;
  std::uint16_t* intensity = nullptr;
  std::uint16_t* stokes_s1 = nullptr;
  std::uint16_t* stokes_s2 = nullptr;
  std::uint16_t* azimuth = nullptr;
  std::uint16_t* dolp = nullptr;
};

ProcessorStatus transform(PolarizationProcessor* handle, const Arguments& arguments);

/// Transforms a frame that fits the geometry of `arguments`, and expects it to go well.
Planes transformed(const Processor& processor, Arguments arguments,
                   const std::vector<std::uint16_t>& frame, OutputSet wanted = OutputSet::all());

}  // namespace kv::test

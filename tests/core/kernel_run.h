#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "planes.h"
#include "platform/cpu_features.h"
#include "polarization_processor/processor_instance.h"
#include "polarization_processor/records/transform_request.h"

namespace kv::test {

struct Frame {
  std::size_t height = 2;
  std::size_t width = 2;
  std::vector<std::uint16_t> samples = {};
  std::uint32_t bit_depth = 16;
  std::uint16_t output_max = 65535;
};

/// Asks for no plane yet.
TransformRequest request_for(const Frame& frame, std::uint32_t phase);

/// The planes as the kernel of one form leaves them.
Planes run_kernel(const Frame& frame, std::uint32_t phase, const PolarizationProcessor& processor,
                  bool sse41, PlaneNumber wanted = kAllPlanes);

/// Number of columns in the vector area, and of rows that are handled in pairs.
std::size_t vector_columns(std::size_t width);
std::size_t paired_rows(std::size_t height);

std::vector<std::uint16_t> noise(std::size_t size, std::uint32_t seed);

/// A test that is run for the SSE2 form and for the SSE4.1 form of the kernels. Each form is
/// forced; the second needs a processor that has it.
class BothForms : public testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    if (GetParam() && !sse41_available()) GTEST_SKIP() << "this processor has no SSE4.1";
  }
  bool sse41() const { return GetParam(); }

  PolarizationProcessor processor_{CpuTier::baseline};
};

inline std::string form_name(const testing::TestParamInfo<bool>& info) {
  return info.param ? "sse41" : "sse2";
}

}  // namespace kv::test

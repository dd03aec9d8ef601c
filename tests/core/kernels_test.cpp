// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Every kernel of the family on every path, byte for byte, against the expectation formed from the
// rules.
#include <gtest/gtest.h>

#include <iostream>

#include "every_path.h"
#include "expected_frame.h"
#include "kernel_name.h"
#include "random_case.h"

namespace kv::test {
namespace {

class Kernels : public EveryPath {
 protected:
  /// Stops at the first wrong plane.
  void try_kernels(const RandomCase& random_case) {
    const Frame& frame = random_case.frame;
    const RoundingScope rounding(random_case.rounding.value);
    processor_.coefficient_store = random_case.coefficients;
    Planes expected(frame.samples.size());
    Planes actual(frame.samples.size());
    for (std::uint32_t phase = 0; phase < kPhaseCount; ++phase) {
      const PhaseView& view = processor_.phase_views[phase];
      TransformRequest request = request_for(frame, phase);
      expected.clear();
      expected.hand_to(request);
      fill_expected_planes(request, view, sse41());

      const bool scaled = kernel_axes_of(request, sse41()).encoding.scaled;
      for (const EncodingAxes& encoding : kEncodings) {
        if (encoding.scaled != scaled && has_linear_plane(encoding.outputs)) continue;
        actual.clear();
        actual.hand_to(request, encoding.outputs);
        run(request, view);
        ASSERT_EQ(difference(actual, expected, frame.width, encoding.outputs), "")
            << kernel_name(kernel_axes_of(request, sse41())) << "\n"
            << random_case;
      }
    }
  }
};

TEST_P(Kernels, GiveTheExpectedBytes) {
  std::cout << "KV_TEST_SEED=" << first_seed() << " KV_TEST_FRAMES=" << frame_count() << std::endl;
  for (std::uint32_t i = 0; i < frame_count() && !HasFatalFailure(); ++i) {
    try_kernels(random_case(first_seed() + i));
  }
}

INSTANTIATE_TEST_SUITE_P(Paths, Kernels, testing::ValuesIn(kPaths), path_name);

}  // namespace
}  // namespace kv::test

// How many kernels there are, and which axes share one.
#include <gtest/gtest.h>

#include <map>
#include <tuple>

#include "kernel_name.h"
#include "polarization_processor/traversal/frame_kernel.h"

namespace kv::test {
namespace {

auto steps_of(const KernelAxes& axes) {
  const FrameKernel kernel = frame_kernel(axes, axes.sse41 ? kSse41Blocks : kSse2Blocks);
  return std::tuple(kernel.prepare, kernel.run_blocks, kernel.finish_row_pair,
                    kernel.walk_last_rows);
}

TEST(KernelFamily, Has3760DistinctMembers) {
  std::map<decltype(steps_of({})), std::string> names;
  for (const KernelAxes& axes : all_kernel_axes()) {
    const auto [first, is_new] = names.emplace(steps_of(axes), kernel_name(axes));
    EXPECT_TRUE(is_new) << kernel_name(axes) << " is " << first->second;
  }
  EXPECT_EQ(names.size(), 3760u);
}

// Without a plane in units of the samples there is nothing to scale, and S0 knows no phase.
TEST(KernelFamily, IdleAxesChangeNoKernel) {
  for (KernelAxes axes : all_kernel_axes()) {
    const auto steps = steps_of(axes);
    const OutputSet& planes = axes.encoding.outputs;
    if (!has_linear_plane(planes)) axes.encoding.scaled = true;
    if (planes == OutputSet(Plane::intensity)) axes.phase = 3;
    EXPECT_EQ(steps_of(axes), steps) << kernel_name(axes);
  }
}

TEST(KernelFamily, AxesOfARequest) {
  struct Case {
    std::int32_t phase;
    std::uint32_t bit_depth;
    std::int32_t output_max;
    std::int64_t height;
    std::int64_t width;
    const char* kernel;
  };
  for (const Case& c : std::vector<Case>{
           {0, 12, 4095, 2, 2, "azimuth+dolp_unscaled_phase0_even_height_even_width_sse2"},
           {1, 12, 4096, 3, 8, "azimuth+dolp_scaled_phase1_odd_height_even_width_sse2"},
           {2, 12, 1000, 4, 9, "azimuth+dolp_scaled_phase2_even_height_odd_width_sse2"},
           {3, 16, 65535, 5, 9, "azimuth+dolp_unscaled_phase3_odd_height_odd_width_sse2"},
           {-1, 0, 1, 2, 2, "azimuth+dolp_scaled_phase0_even_height_even_width_sse2"}}) {
    std::uint16_t plane = 0;
    TransformRequest request{};
    request.polar_phase = c.phase;
    request.bit_depth = c.bit_depth;
    request.output_max_int = c.output_max;
    request.height = c.height;
    request.width = c.width;
    request.azimuth = request.dolp = &plane;
    EXPECT_EQ(kernel_name(kernel_axes_of(request, false)), c.kernel);
  }
}

}  // namespace
}  // namespace kv::test

// How many kernels there are, and which axes share one.
#include <gtest/gtest.h>

#include <map>
#include <set>

#include "polarization_processor/routing/kernel_selector.h"
#include "polarization_processor/traversal/frame_kernels.h"
#include "polarization_processor/traversal/kernel_name.h"

namespace kv::test {
namespace {

template <class Visit>
void for_all_axes(Visit visit) {
  for (const bool scaled : {false, true}) {
    for (std::size_t set = 1; set < 64; ++set) {
      for (std::uint32_t phase = 0; phase < 4; ++phase) {
        for (unsigned flags = 0; flags < 8; ++flags) {
          visit(KernelAxes{.phase = phase,
                           .encoding = {.outputs = OutputSet::from_number(set), .scaled = scaled},
                           .even_height = (flags & 1) != 0,
                           .even_width = (flags & 2) != 0,
                           .sse41 = (flags & 4) != 0});
        }
      }
    }
  }
}

/// Without a plane in units of the samples there is nothing to scale, and the intensity alone does
/// not depend on the phase. No other kernels are one.
KernelAxes without_idle_axes(KernelAxes axes) {
  const OutputSet& planes = axes.encoding.outputs;
  if (!planes.intensity && !planes.stokes_s1 && !planes.stokes_s2) axes.encoding.scaled = false;
  const bool intensity_alone = planes.intensity && !planes.stokes_s1 && !planes.stokes_s2 &&
                               !planes.normalized_stokes && !planes.azimuth && !planes.dolp;
  if (intensity_alone) axes.phase = 0;
  return axes;
}

TEST(KernelFamily, Has3760DistinctMembers) {
  std::map<FrameKernel, std::set<std::string>> names;
  for_all_axes([&](const KernelAxes& axes) {
    const FrameKernel kernel = frame_kernel_at(axes);
    ASSERT_NE(kernel, nullptr) << kernel_name(axes);
    names[kernel].insert(kernel_name(without_idle_axes(axes)));
  });
  EXPECT_EQ(names.size(), 3760u);
  for (const auto& [kernel, names_of_it] : names) {
    EXPECT_EQ(names_of_it.size(), 1u) << *names_of_it.begin() << " is also another kernel";
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

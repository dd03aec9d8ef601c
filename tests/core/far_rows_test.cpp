// Places in a frame are counted in 64 bits: the last rows of a frame of more than 2^32 pixels, by
// the steps that evaluate them. The rows above stay unread.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>

#include "expected_frame.h"
#include "frame.h"
#include "kernel_name.h"
#include "mapped_memory.h"
#include "planes.h"
#include "platform/cpu_features.h"
#include "polarization_processor/processor_instance.h"
#include "polarization_processor/traversal/frame_kernel.h"

namespace kv::test {
namespace {

constexpr std::size_t kFirstRow = 100'000'000;

/// A row pair and the last rows, of a frame that has `kFirstRow` rows above them.
void expect_rows_behind_all_others(const Frame& end, bool sse41) {
  const PolarizationProcessor processor(CpuTier::baseline);
  const PhaseView& view = processor.phase_views[1];
  const std::size_t first = kFirstRow * end.width;
  TransformRequest request = request_for(end, 1);
  Planes expected(end.samples.size());
  expected.hand_to(request);
  fill_expected_planes(request, view, sse41);

  const std::size_t pixels = first + end.samples.size();
  const MappedMemory input(pixels * sizeof(std::uint16_t));
  std::ranges::copy(end.samples, static_cast<std::uint16_t*>(input.at(0)) + first);
  std::map<Plane, MappedMemory> planes;
  for (const PlaneTraits& traits : kPlanes) {
    planes.try_emplace(traits.plane, pixels * pixel_size(traits.plane));
  }
  request.height += kFirstRow;
  request.input = static_cast<const std::uint16_t*>(input.at(0));
  point_to_planes(request, OutputSet::all(), [&](Plane plane) { return planes.at(plane).at(0); });

  const KernelAxes axes = kernel_axes_of(request, sse41);
  const FrameKernel kernel = frame_kernel(axes, sse41 ? kSse41Blocks : kSse2Blocks);
  const WeightedFrame frame(request, view);
  const std::size_t blocks = end.width / 4 - 1;
  kernel.run_blocks(
      request, kernel.prepare(request), blocks,
      {first, first + end.width, first + 2 * end.width, 2 * first, 2 * (first + end.width), true});
  kernel.finish_row_pair(frame, kFirstRow, kBlockColumns * blocks);
  kernel.walk_last_rows(frame, kFirstRow + 2);
  for (const PlaneTraits& traits : kPlanes) {
    const std::size_t bytes = pixel_size(traits.plane);
    EXPECT_EQ(std::memcmp(planes.at(traits.plane).at(first * bytes),
                          expected.bytes(traits.plane).data() + Planes::kGuard,
                          end.samples.size() * bytes),
              0)
        << traits.name << " of " << kernel_name(axes);
  }
}

TEST(FarRows, AreEvaluatedInTheirPlace) {
  for (const std::size_t height : {3u, 4u}) {
    // One block alone; several at a time. Half a cell at the end; whole ones.
    for (const std::size_t width : {47u, 48u}) {
      const Frame end{.height = height, .width = width, .samples = noise(height * width, 5)};
      expect_rows_behind_all_others(end, false);
      if (sse41_available()) expect_rows_behind_all_others(end, true);
    }
  }
}

}  // namespace
}  // namespace kv::test

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Kernels stay inside the frame and its planes, and find their place in them however large they
// are.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <map>

#include "every_path.h"
#include "expected_frame.h"
#include "kernel_name.h"
#include "polarization_processor/traversal/frame_kernel.h"

namespace kv::test {
namespace {

/// Zeros from the operating system, which takes memory for the touched pages only.
class MappedMemory {
 public:
  explicit MappedMemory(std::size_t bytes)
      : size_(bytes),
        data_(mmap(nullptr, bytes, PROT_READ | PROT_WRITE,
                   MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) {
    EXPECT_NE(data_, MAP_FAILED);
  }
  ~MappedMemory() { munmap(data_, size_); }
  MappedMemory(const MappedMemory&) = delete;
  MappedMemory& operator=(const MappedMemory&) = delete;

  void* at(std::size_t offset) const { return static_cast<unsigned char*>(data_) + offset; }

 private:
  std::size_t size_;
  void* data_;
};

/// Where memory touches a page that cannot be accessed, so that a step outside ends the process.
enum class Fence { before, after };

class FencedMemory {
 public:
  FencedMemory(std::size_t bytes, Fence fence) : mapped_(rounded_up(bytes) + page_size()) {
    const std::size_t closed_page = fence == Fence::before ? 0 : rounded_up(bytes);
    EXPECT_EQ(mprotect(mapped_.at(closed_page), page_size(), PROT_NONE), 0);
    data_ = mapped_.at(fence == Fence::before ? page_size() : closed_page - bytes);
  }
  void* data() const { return data_; }

 private:
  static std::size_t page_size() { return static_cast<std::size_t>(sysconf(_SC_PAGESIZE)); }
  static std::size_t rounded_up(std::size_t bytes) {
    return (bytes + page_size() - 1) / page_size() * page_size();
  }

  MappedMemory mapped_;
  void* data_;
};

template <class Memory, class... Arguments>
std::map<Plane, Memory> memory_of_planes(std::size_t pixels, Arguments... arguments) {
  std::map<Plane, Memory> planes;
  for (const PlaneTraits& traits : kPlanes) {
    planes.try_emplace(traits.plane, pixels * pixel_size(traits.plane), arguments...);
  }
  return planes;
}

class MemoryBounds : public EveryPath {
 protected:
  void transform_fenced(std::size_t height, std::size_t width, Fence fence) {
    const std::size_t pixels = height * width;
    const FencedMemory input(pixels * sizeof(std::uint16_t), fence);
    const auto planes = memory_of_planes<FencedMemory>(pixels, fence);
    TransformRequest request = request_for({.height = height, .width = width}, 0);
    request.input = static_cast<const std::uint16_t*>(input.data());
    // Alone, each of the kinds of plane that are stored in a way of their own; then all.
    for (const OutputSet wanted : {OutputSet(Plane::normalized_stokes), OutputSet(Plane::stokes_s1),
                                   OutputSet(Plane::azimuth), OutputSet::all()}) {
      point_to_planes(request, wanted, [&](Plane plane) { return planes.at(plane).data(); });
      run(request, processor_.phase_views[0]);
    }
  }
};

TEST_P(MemoryBounds, AreKept) {
  for (const Fence fence : {Fence::before, Fence::after}) {
    for (std::size_t height = 2; height <= 7; ++height) {
      for (std::size_t width = height == 2 ? 2 : 4; width <= 40; ++width) {
        transform_fenced(height, width, fence);
      }
      for (const std::size_t width : {64u, 67u, 82u, 101u, 132u, 151u}) {
        transform_fenced(height, width, fence);
      }
    }
  }
}

using MemoryBoundsDeathTest = MemoryBounds;

/// A width of 2 or 3 has no guard once there is a row pair.
TEST_P(MemoryBoundsDeathTest, NarrowFramesRunAway) {
  for (const std::size_t height : {3u, 4u}) {
    for (const std::size_t width : {2u, 3u}) {
      EXPECT_DEATH(transform_fenced(height, width, Fence::after), "")
          << "height " << height << ", width " << width;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Paths, MemoryBounds, testing::ValuesIn(kPaths), path_name);
INSTANTIATE_TEST_SUITE_P(Paths, MemoryBoundsDeathTest, testing::ValuesIn(kPaths), path_name);

/// Places are counted in 64 bits: a row pair and the last rows of a frame that has 2^32 pixels
/// above them, by the steps that evaluate them. Nobody touches the rows above.
void expect_far_rows(const Frame& end, bool sse41) {
  const PolarizationProcessor processor(CpuTier::baseline);
  const PhaseView& view = processor.phase_views[1];
  const std::size_t first_row = ((std::size_t{1} << 32) / end.width + 2) / 2 * 2;
  const std::size_t first = first_row * end.width;
  TransformRequest request = request_for(end, 1);
  Planes expected(end.samples.size());
  expected.hand_to(request);
  fill_expected_planes(request, view, sse41);

  const std::size_t pixels = first + end.samples.size();
  const MappedMemory input(pixels * sizeof(std::uint16_t));
  std::ranges::copy(end.samples, static_cast<std::uint16_t*>(input.at(0)) + first);
  const auto planes = memory_of_planes<MappedMemory>(pixels);
  request.height += static_cast<std::int64_t>(first_row);
  request.input = static_cast<const std::uint16_t*>(input.at(0));
  point_to_planes(request, OutputSet::all(), [&](Plane plane) { return planes.at(plane).at(0); });

  const KernelAxes axes = kernel_axes_of(request, sse41);
  const FrameKernel kernel = frame_kernel(axes, sse41 ? kSse41Blocks : kSse2Blocks);
  const WeightedFrame frame(request, view);
  const std::size_t blocks = end.width / 4 - 1;
  kernel.run_blocks(
      request, kernel.prepare(request), blocks,
      {first, first + end.width, first + 2 * end.width, 2 * first, 2 * (first + end.width), true});
  kernel.finish_row_pair(frame, first_row, kBlockColumns * blocks);
  kernel.walk_last_rows(frame, first_row + 2);
  for (const PlaneTraits& traits : kPlanes) {
    const std::size_t bytes = pixel_size(traits.plane);
    EXPECT_EQ(std::memcmp(planes.at(traits.plane).at(first * bytes),
                          expected.bytes(traits.plane).data() + Planes::kGuard,
                          end.samples.size() * bytes),
              0)
        << traits.name << " of " << kernel_name(axes);
  }
}

TEST(Memory, IsCountedIn64Bits) {
  for (const std::size_t height : {3u, 4u}) {
    // Blocks one by one, and several at a time; half a cell at the end, and a whole one.
    for (const std::size_t width : {13u, 48u}) {
      const Frame end{.height = height, .width = width, .samples = noise(height * width, 5)};
      expect_far_rows(end, false);
      if (sse41_available()) expect_far_rows(end, true);
    }
  }
}

}  // namespace
}  // namespace kv::test

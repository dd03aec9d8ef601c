// Kernels stay inside the frame and its planes. Each buffer ends, or begins, at a page that cannot
// be accessed, so that a step outside ends the process.
#include <gtest/gtest.h>

#include "every_path.h"
#include "fenced_memory.h"
#include "kernel_run.h"

namespace kv::test {
namespace {

struct FencedPlanes {
  FencedPlanes(std::size_t pixels, Fence fence)
      : normalized_stokes(2 * pixels, fence),
        intensity(pixels, fence),
        stokes_s1(pixels, fence),
        stokes_s2(pixels, fence),
        azimuth(pixels, fence),
        dolp(pixels, fence) {}

  FencedPlane<float> normalized_stokes;
  FencedPlane<std::uint16_t> intensity;
  FencedPlane<std::uint16_t> stokes_s1;
  FencedPlane<std::uint16_t> stokes_s2;
  FencedPlane<std::uint16_t> azimuth;
  FencedPlane<std::uint16_t> dolp;
};

class MemoryBounds : public EveryPath {
 protected:
  void transform_fenced(std::size_t height, std::size_t width, Fence fence) {
    const std::size_t pixels = height * width;
    FencedPlane<std::uint16_t> input(pixels, fence);
    FencedPlanes planes(pixels, fence);
    TransformRequest request = request_for({.height = height, .width = width}, 0);
    request.input = input.data();
    // Alone, each of the three kinds of plane; then all.
    for (const PlaneNumber wanted : {1u, 4u, 16u, kAllPlanes}) {
      request.normalized_stokes = wanted & 1 ? planes.normalized_stokes.data() : nullptr;
      request.intensity = wanted & 2 ? planes.intensity.data() : nullptr;
      request.stokes_s1 = wanted & 4 ? planes.stokes_s1.data() : nullptr;
      request.stokes_s2 = wanted & 8 ? planes.stokes_s2.data() : nullptr;
      request.azimuth = wanted & 16 ? planes.azimuth.data() : nullptr;
      request.dolp = wanted & 32 ? planes.dolp.data() : nullptr;
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

}  // namespace
}  // namespace kv::test

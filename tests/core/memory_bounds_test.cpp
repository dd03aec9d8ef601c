// Kernels stay inside the frame and its planes. Each buffer ends, or begins, at a page that cannot
// be accessed, so that a step outside ends the process.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <map>

#include "every_path.h"
#include "mapped_memory.h"

namespace kv::test {
namespace {

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

class MemoryBounds : public EveryPath {
 protected:
  void transform_fenced(std::size_t height, std::size_t width, Fence fence) {
    const std::size_t pixels = height * width;
    const FencedMemory input(pixels * sizeof(std::uint16_t), fence);
    std::map<Plane, FencedMemory> planes;
    for (const PlaneTraits& traits : kPlanes) {
      planes.try_emplace(traits.plane, pixels * pixel_size(traits.plane), fence);
    }
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

}  // namespace
}  // namespace kv::test

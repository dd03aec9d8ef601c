// A plane holds the same bytes whatever else is asked for, and nothing around it is touched.
#include <gtest/gtest.h>

#include <random>

#include "public_call.h"

namespace kv::test {
namespace {

std::vector<std::uint16_t> noise(std::size_t size) {
  std::minstd_rand random(7);
  std::vector<std::uint16_t> frame(size);
  for (std::uint16_t& sample : frame) sample = static_cast<std::uint16_t>(random());
  return frame;
}

TEST(RequestedPlanes, DoNotDependOnEachOther) {
  const Processor processor;
  for (const Arguments& arguments :
       {Arguments{.width = 2, .height = 2},
        Arguments{.width = 3, .height = 2, .bit_depth = 12, .output_max = 65535},
        Arguments{.width = 8, .height = 8}, Arguments{.width = 9, .height = 5},
        Arguments{.width = 13, .height = 6, .bit_depth = 12, .output_max = 65535},
        Arguments{.width = 12, .height = 7, .bit_depth = 16, .output_max = 255}}) {
    const auto frame = noise(static_cast<std::size_t>(arguments.width * arguments.height));
    const Planes all = transformed(processor, arguments, frame);
    EXPECT_TRUE(all.guards_untouched());

    for (PlaneNumber wanted = 1; wanted < kAllPlanes; ++wanted) {
      const Planes some = transformed(processor, arguments, frame, wanted);
      EXPECT_EQ(difference(some, all, static_cast<std::size_t>(arguments.width), wanted), "")
          << "set " << wanted << ", height " << arguments.height << ", width " << arguments.width;
    }
  }
}

}  // namespace
}  // namespace kv::test

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// How many kernels there are: that each gives its own planes is for another test.
#include <gtest/gtest.h>

#include <map>
#include <tuple>

#include "kernel_name.h"
#include "polarization_processor/traversal/frame_kernel.h"

namespace kv::test {
namespace {

TEST(KernelFamily, Has3760DistinctMembers) {
  using Steps = std::tuple<decltype(FrameKernel::prepare), RunBlocks, FinishRowPair, WalkLastRows>;
  std::map<Steps, std::string> names;
  for (const KernelAxes& axes : all_kernel_axes()) {
    const FrameKernel kernel = frame_kernel(axes, axes.sse41 ? kSse41Blocks : kSse2Blocks);
    const auto [first, is_new] = names.emplace(
        Steps(kernel.prepare, kernel.run_blocks, kernel.finish_row_pair, kernel.walk_last_rows),
        kernel_name(axes));
    EXPECT_TRUE(is_new) << kernel_name(axes) << " is " << first->second;
  }
  EXPECT_EQ(names.size(), 3760u);
}

}  // namespace
}  // namespace kv::test

// That the modules are there and taken where the machine can run them, so that a skipped path of
// the other tests is no gap.
#include <gtest/gtest.h>

#include "cpu_features.h"
#include "processor_instance.h"

namespace kv::test {
namespace {

TEST(VectorModules, AreUsableJustWhereTheMachineRunsThem) {
  const PolarizationProcessor processor(CpuTier::baseline);
  EXPECT_EQ(processor.avx2_backend.usable(), avx2_runnable());
  EXPECT_EQ(processor.avx512_backend.usable(), avx512_runnable());
}

}  // namespace
}  // namespace kv::test

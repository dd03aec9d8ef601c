// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// That every path that the machine can run is there, so that one which the other tests skip is no
// gap.
#include <cstdlib>

#include "every_path.h"
#include "processor_flags.h"

namespace kv::test {
namespace {

using Names = std::set<std::string>;

/// KV_TEST_PATHS names the paths of an emulated processor.
std::optional<Names> known_paths() {
  if (const char* const known = std::getenv("KV_TEST_PATHS")) {
    std::istringstream words(known);
    return Names{std::istream_iterator<std::string>(words), {}};
  }
  const auto flags = processor_flags();
  if (!flags) return std::nullopt;
  Names names{"sse2"};
  if (flags->contains("sse4_1")) names.insert("sse41");
  if (flags->contains("avx2")) names.insert({"avx2", "avx2_as_sse2"});
  if (flags->contains("avx512f") && flags->contains("avx512dq") && flags->contains("avx512bw")) {
    names.insert({"avx512", "avx512_as_sse2"});
  }
  return names;
}

TEST(Paths, AreThoseOfTheProcessor) {
  const PolarizationProcessor processor(CpuTier::baseline);
  EXPECT_EQ(processor.avx2_backend.usable(), avx2_runnable(read_cpu_registers()));
  EXPECT_EQ(processor.avx512_backend.usable(), avx512_runnable(read_cpu_registers()));

  const auto known = known_paths();
  if (!known) GTEST_SKIP() << "this system does not tell what its processor has";
  Names available;
  for (const Path& path : kPaths) {
    if (path_available(path, processor)) available.insert(path.name);
  }
  EXPECT_EQ(available, *known);
}

}  // namespace
}  // namespace kv::test

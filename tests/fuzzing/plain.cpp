// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// The entries that libFuzzer calls, of programs in which memory does not run out.
#include "fuzzing/fuzzing.h"

namespace kv::fuzzing {

void let_allocations_fail(bool) {}
void spare_allocations_below(std::size_t) {}
bool allocations_can_fail() { return false; }

}  // namespace kv::fuzzing

extern "C" int LLVMFuzzerInitialize(int*, char***);
extern "C" int LLVMFuzzerInitialize(int*, char***) {
  kv::fuzzing::set_up();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  kv::fuzzing::fuzz(kv::fuzzing::Choices({data, size}));
  return 0;
}

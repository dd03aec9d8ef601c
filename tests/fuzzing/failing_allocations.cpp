// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// The entries that libFuzzer calls, of programs in which allocations fail: the last two bytes of an
// input say which. The linker puts the functions of this file in the place of malloc, calloc and
// realloc; those of new and delete are replaced.
#include <atomic>

#include "fuzzing/fuzzing.h"

extern "C" {
// NOLINTBEGIN(readability-identifier-naming, bugprone-reserved-identifier): the linker's names.
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* memory, std::size_t size);
void* __wrap_malloc(std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size);
void* __wrap_realloc(void* memory, std::size_t size);
}

namespace {

std::atomic<bool> may_fail = false;
std::atomic<unsigned> allocations = 0;

/// The first allocation that fails; from there on all of them, or one in `period`, or that one.
unsigned first_failure = 0;
unsigned period = 0;

constexpr unsigned kAlone = 1u << 30;

std::size_t spared_below = 0;

bool fails(std::size_t size) {
  if (size < spared_below || !may_fail.load(std::memory_order_relaxed)) return false;
  const unsigned allocation = allocations.fetch_add(1, std::memory_order_relaxed);
  return allocation >= first_failure && (allocation - first_failure) % period == 0;
}

void choose_failures(std::uint8_t first, std::uint8_t kind) {
  constexpr std::array<unsigned, 4> periods = {kAlone, 1, 2, 7};
  period = periods[kind % periods.size()];
  first_failure = first + 256u * (kind / 4u % 4u);
  allocations = 0;
}

}  // namespace

void* __wrap_malloc(std::size_t size) { return fails(size) ? nullptr : __real_malloc(size); }
void* __wrap_calloc(std::size_t count, std::size_t size) {
  return fails(count * size) ? nullptr : __real_calloc(count, size);
}
void* __wrap_realloc(void* memory, std::size_t size) {
  return fails(size) ? nullptr : __real_realloc(memory, size);
}
// NOLINTEND(readability-identifier-naming, bugprone-reserved-identifier)

namespace {

void* allocate(std::size_t size) noexcept {
  return fails(size) ? nullptr : __real_malloc(std::max<std::size_t>(size, 1));
}
void* allocate(std::size_t size, std::align_val_t alignment) noexcept {
  void* memory = nullptr;
  const bool failed =
      fails(size) || posix_memalign(&memory, static_cast<std::size_t>(alignment), size) != 0;
  return failed ? nullptr : memory;
}
void* or_throw(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace

// All forms, as a sanitizer's own ones do not end in each other.
void* operator new(std::size_t size) { return or_throw(allocate(size)); }
void* operator new[](std::size_t size) { return or_throw(allocate(size)); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return or_throw(allocate(size, alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return or_throw(allocate(size, alignment));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return allocate(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return allocate(size, alignment);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }

namespace kv::fuzzing {

void let_allocations_fail(bool fail) { may_fail = fail; }
void spare_allocations_below(std::size_t bytes) { spared_below = bytes; }
bool allocations_can_fail() { return true; }

}  // namespace kv::fuzzing

extern "C" int LLVMFuzzerInitialize(int*, char***);
extern "C" int LLVMFuzzerInitialize(int*, char***) {
  kv::fuzzing::set_up();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  choose_failures(data[size - 2], data[size - 1]);
  kv::fuzzing::fuzz(kv::fuzzing::Choices({data, size - 2}));
  return 0;
}

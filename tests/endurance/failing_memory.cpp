// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "failing_memory.h"

#include <execinfo.h>
#include <malloc.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <exception>

// glibc's own, beneath what a program puts in front.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);
}

namespace {

std::atomic<long> failing = 0;
std::atomic<long> counted = 0;
std::atomic<long> alive = 0;
std::atomic<bool> failed = false;
std::atomic<bool*> noted = nullptr;

bool fails_here() {
  if (failing.load(std::memory_order_relaxed) == 0) return false;
  if (++counted != failing) return false;
  failed = true;
  if (noted != nullptr) *noted = true;
  errno = ENOMEM;
  return true;
}

template <class Allocate>
void* allocate(Allocate allocate) {
  if (fails_here()) return nullptr;
  void* const memory = allocate();
  if (memory != nullptr) alive.fetch_add(1, std::memory_order_relaxed);
  return memory;
}

[[noreturn]] void tell_calls() {
  failing = 0;
  void* calls[64];
  backtrace_symbols_fd(calls, backtrace(calls, 64), STDERR_FILENO);
  std::abort();
}

const std::terminate_handler handler_before = std::set_terminate(tell_calls);

}  // namespace

extern "C" {

__attribute__((visibility("default"))) bool kv_fail_allocation(long number) {
  failing = 0;
  counted = 0;
  const bool has_failed = failed.exchange(false);
  failing = number;
  return has_failed;
}

__attribute__((visibility("default"))) void kv_note_failure_in(bool* place) { noted = place; }

__attribute__((visibility("default"))) long kv_allocations_alive(void) { return alive; }

__attribute__((visibility("default"))) void* malloc(std::size_t size) {
  return allocate([=] { return __libc_malloc(size); });
}

__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size) {
  return allocate([=] { return __libc_calloc(count, size); });
}

__attribute__((visibility("default"))) void* realloc(void* memory, std::size_t size) {
  if (memory == nullptr) return malloc(size);
  // To a size of 0 it gives back.
  if (size != 0) return fails_here() ? nullptr : __libc_realloc(memory, size);
  alive.fetch_sub(1, std::memory_order_relaxed);
  return __libc_realloc(memory, size);
}

__attribute__((visibility("default"))) void* memalign(std::size_t alignment, std::size_t size) {
  return allocate([=] { return __libc_memalign(alignment, size); });
}

__attribute__((visibility("default"))) void* aligned_alloc(std::size_t alignment,
                                                           std::size_t size) {
  return memalign(alignment, size);
}

__attribute__((visibility("default"))) int posix_memalign(void** memory, std::size_t alignment,
                                                          std::size_t size) {
  void* const found = memalign(alignment, size);
  if (found == nullptr) return ENOMEM;
  *memory = found;
  return 0;
}

__attribute__((visibility("default"))) void free(void* memory) {
  if (memory != nullptr) alive.fetch_sub(1, std::memory_order_relaxed);
  __libc_free(memory);
}
}

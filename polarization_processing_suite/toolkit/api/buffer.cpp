// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/polarization/buffer.h"

#include <limits>
#include <new>
#include <string>

#include "kv/polarization/fault.h"
#include "platform/memory.h"

namespace kv::polarization {
namespace {

constexpr std::size_t kHugePage = 2u << 20;

/// A cache line, and more than any vector asks for.
constexpr std::align_val_t kLine{64};

/// Smaller buffers would waste much of their huge pages.
constexpr bool takes_huge_pages(std::size_t bytes) { return bytes >= 2 * kHugePage; }

constexpr std::align_val_t alignment_of(std::size_t bytes) {
  return takes_huge_pages(bytes) ? std::align_val_t{kHugePage} : kLine;
}

}  // namespace

void* allocate_pages(std::size_t count, std::size_t size) {
  constexpr std::size_t most = std::numeric_limits<std::ptrdiff_t>::max();
  const std::size_t bytes = count * size;
  void* memory =
      count <= most / size ? ::operator new(bytes, alignment_of(bytes), std::nothrow) : nullptr;
  if (memory == nullptr) {
    throw Fault(FaultKind::memory, "there is no memory for " + std::to_string(count) + " times " +
                                       std::to_string(size) +
                                       " bytes; use smaller frames or close other programs");
  }
  if (takes_huge_pages(bytes)) platform::prefer_huge_pages(memory, bytes);
  return memory;
}

void free_pages(void* memory, std::size_t count, std::size_t size) noexcept {
  ::operator delete(memory, alignment_of(count * size));
}

}  // namespace kv::polarization

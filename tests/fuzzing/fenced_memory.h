// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include "fuzzing/fuzzing.h"

namespace kv::fuzzing {

/// Memory between pages that nobody may touch, so that a step out of it ends the process, whether
/// or not a sanitizer watches the code that makes it.
class FencedMemory {
 public:
  static constexpr std::uint8_t kFill = 0xA5;

  explicit FencedMemory(std::size_t bytes) {
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    const std::size_t inside = (bytes + page - 1) / page * page;
    void* const memory =
        ::mmap(nullptr, inside + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    require(memory != MAP_FAILED, "there is memory");
    inside_ = {static_cast<std::uint8_t*>(memory) + page, inside};
    require(::mprotect(inside_.data(), inside, PROT_READ | PROT_WRITE) == 0, "memory opens");
  }

  /// A place of that size whose one end touches a fence, or nearly: `gap` bytes stay between.
  /// All of the memory is marked.
  std::span<std::uint8_t> place(std::size_t bytes, bool at_end, std::size_t gap) {
    std::ranges::fill(inside_, kFill);
    require(bytes + gap <= inside_.size(), "the place fits");
    place_ = at_end ? inside_.last(bytes + gap).first(bytes) : inside_.subspan(gap, bytes);
    return place_;
  }

  /// Whether no byte around the place has changed.
  bool surroundings_untouched() const {
    const auto before = static_cast<std::size_t>(place_.data() - inside_.data());
    return marked(inside_.first(before)) && marked(inside_.subspan(before + place_.size()));
  }
  bool untouched() const { return marked(inside_); }

 private:
  static bool marked(std::span<const std::uint8_t> bytes) {
    return std::ranges::all_of(bytes, [](std::uint8_t byte) { return byte == kFill; });
  }

  std::span<std::uint8_t> inside_;
  std::span<std::uint8_t> place_;
};

}  // namespace kv::fuzzing

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>

#include "kv/polarization/fault.h"

namespace kv::fuzzing {

/// The bytes of an input, handed out as choices; zeros behind their end.
class Choices {
 public:
  explicit Choices(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  /// Any value of that type.
  template <class Number>
  Number number() {
    std::array<std::uint8_t, sizeof(Number)> bytes{};
    const auto taken = take(sizeof(Number));
    std::ranges::copy(taken, bytes.begin());
    return std::bit_cast<Number>(bytes);
  }
  std::uint8_t byte() { return number<std::uint8_t>(); }

  /// 0 to count - 1; count is 1 to 65536.
  std::size_t below(std::size_t count) {
    return (count <= 256 ? byte() : number<std::uint16_t>()) % count;
  }

  /// True for one value of a byte in `rarity`, the last one of each `rarity`.
  bool once_in(std::size_t rarity) { return below(rarity) == rarity - 1; }

  template <class Element, std::size_t count>
  const Element& one_of(const std::array<Element, count>& table) {
    return table[below(count)];
  }

  /// Up to that many bytes.
  std::span<const std::uint8_t> take(std::size_t count) {
    const auto taken = bytes_.first(std::min(count, bytes_.size()));
    bytes_ = bytes_.subspan(taken.size());
    return taken;
  }
  std::span<const std::uint8_t> rest() { return take(bytes_.size()); }

 private:
  std::span<const std::uint8_t> bytes_;
};

/// Ends the process, as a finding, when something does not hold.
inline void require(bool holds, std::string_view what) {
  if (holds) return;
  std::fprintf(stderr, "finding: %.*s\n", static_cast<int>(what.size()), what.data());
  std::abort();
}

/// Lets allocations fail, in the programs that are linked with failing_allocations.cpp, as the
/// input's first bytes tell. Targets keep their own ones out of it.
void let_allocations_fail(bool fail);

/// From here on those of fewer bytes succeed; for code with small allocations of a library whose
/// lack of memory is not ours.
void spare_allocations_below(std::size_t bytes);

/// Whether this is such a program.
bool allocations_can_fail();

class FailingAllocations {
 public:
  FailingAllocations() { let_allocations_fail(true); }
  ~FailingAllocations() { let_allocations_fail(false); }
  FailingAllocations(const FailingAllocations&) = delete;
  FailingAllocations& operator=(const FailingAllocations&) = delete;
};

/// Runs code of the toolkit, out of which may come a Fault with its one line, and nothing else but
/// the lack of memory where there is one. Returns whether nothing did.
template <class Work>
bool succeeds(Work work) {
  try {
    const FailingAllocations failing;
    work();
    return true;
  } catch (const kv::polarization::Fault& fault) {
    const std::string_view line = fault.what();
    require(!line.empty() && line.find_first_of("\r\n") == line.npos, "a fault has one line");
  } catch (const std::bad_alloc&) {
    require(allocations_can_fail(), "std::bad_alloc came out");
  }
  return false;
}

/// What a target does with an input.
void fuzz(Choices choices);

/// What a target does once, before the first input.
void set_up();

}  // namespace kv::fuzzing

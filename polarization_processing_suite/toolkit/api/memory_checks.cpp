// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/api/memory_checks.h"

#include <functional>

#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

bool overlap(std::span<const std::byte> a, std::span<const std::byte> b) {
  // The built-in comparison of pointers into different arrays has no meaning; this one has.
  const std::less<> before;
  return before(a.data(), b.data() + b.size()) && before(b.data(), a.data() + a.size());
}

}  // namespace

void refuse(const std::string& line) { throw Fault(FaultKind::argument, line); }

void check_overlap(const std::vector<NamedMemory>& all) {
  for (std::size_t i = 1; i < all.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (overlap(all[i].bytes, all[j].bytes)) {
        refuse("the memory of " + std::string(all[i].name) + " overlaps that of " +
               std::string(all[j].name) + "; each needs memory of its own");
      }
    }
  }
}

void check_room(std::string_view plane, std::size_t size, std::size_t needed) {
  if (size >= needed) return;
  refuse("the plane " + std::string(plane) + " has room for " + std::to_string(size) +
         " elements; this frame fills " + std::to_string(needed));
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/outputs/hash_set.h"

namespace kv::polarization {
namespace {

constexpr std::uint64_t kEmpty = 0;

}  // namespace

bool HashSet::insert(std::uint64_t hash) {
  if (hash == kEmpty) hash = 1;
  const std::size_t slot = slot_of(hash);
  if (slots_[slot] != kEmpty) return false;
  slots_[slot] = hash;
  if (++count_ > slots_.size() / 4 * 3) grow();
  return true;
}

std::size_t HashSet::slot_of(std::uint64_t hash) const {
  if (hash == kEmpty) hash = 1;
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = hash & mask;
  while (slots_[slot] != kEmpty && slots_[slot] != hash) slot = (slot + 1) & mask;
  return slot;
}

void HashSet::grow() {
  std::vector<std::uint64_t> old(slots_.size() * 2);
  old.swap(slots_);
  for (const std::uint64_t hash : old) {
    if (hash != kEmpty) slots_[slot_of(hash)] = hash;
  }
}

}  // namespace kv::polarization

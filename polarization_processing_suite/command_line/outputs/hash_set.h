// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kv::polarization {

/// A set of 64-bit hashes in one piece of memory: 11 to 21 bytes for each, of millions.
class HashSet {
 public:
  /// Returns whether it is new.
  bool insert(std::uint64_t hash);

  bool contains(std::uint64_t hash) const { return slots_[slot_of(hash)] != 0; }

 private:
  /// Where the hash is, or would be.
  std::size_t slot_of(std::uint64_t hash) const;
  void grow();

  std::vector<std::uint64_t> slots_ = std::vector<std::uint64_t>(64);  // a power of two; 0 is empty
  std::size_t count_ = 0;
};

}  // namespace kv::polarization

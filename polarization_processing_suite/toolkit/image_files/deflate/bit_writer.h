// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <cstring>

namespace kv::polarization {

/// Puts bits into bytes, the lowest ones first, as deflate has them. Loops that write bytes use a
/// copy of their own, as a compiler keeps the members of others in memory.
class BitWriter {
 public:
  /// The memory there has to have room for eight bytes more than are written. Bits that do not fill
  /// a byte go to the new place.
  void move_to(std::uint8_t* to) { to_ = to; }

  /// Where the next byte goes.
  std::uint8_t* position() const { return to_; }

  /// Up to 56 bits in sum between two calls of flush(). What is above `count` must be 0.
  void put(std::uint64_t bits, unsigned count) {
    bits_ |= bits << count_;
    count_ += count;
  }

  /// Stores the bytes that are full.
  void flush() {
    std::memcpy(to_, &bits_, sizeof bits_);
    to_ += count_ / 8;
    bits_ >>= count_ & ~7u;
    count_ %= 8;
  }

  /// Fills the last byte up with zeros.
  void align() {
    count_ = (count_ + 7) & ~7u;
    flush();
  }

  /// Behind align().
  void copy(const std::uint8_t* from, std::size_t size) {
    if (size == 0) return;  // from may be null then, which memcpy must not get
    std::memcpy(to_, from, size);
    to_ += size;
  }

 private:
  std::uint8_t* to_ = nullptr;
  std::uint64_t bits_ = 0;
  unsigned count_ = 0;
};

}  // namespace kv::polarization

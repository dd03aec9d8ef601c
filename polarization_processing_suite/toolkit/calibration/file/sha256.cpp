// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/file/sha256.h"

#include <algorithm>
#include <bit>
#include <vector>

namespace kv::polarization {
namespace {

// First 32 bits of the fractional parts of the cube roots of the first 64 primes.
constexpr std::array<std::uint32_t, 64> kRoundConstants = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

constexpr std::size_t kBlock = 64;

std::uint32_t rotations(std::uint32_t word, int a, int b, int c) {
  return std::rotr(word, a) ^ std::rotr(word, b) ^ std::rotr(word, c);
}

}  // namespace

void Sha256::add_block(const std::byte* block) {
  std::array<std::uint32_t, 64> words;
  for (std::size_t i = 0; i < 16; ++i) {
    words[i] = 0;
    for (std::size_t k = 0; k < 4; ++k) {
      words[i] = words[i] << 8 | std::to_integer<std::uint32_t>(block[4 * i + k]);
    }
  }
  for (std::size_t i = 16; i < 64; ++i) {
    const std::uint32_t near = words[i - 2];
    const std::uint32_t far = words[i - 15];
    const std::uint32_t near_mix = std::rotr(near, 17) ^ std::rotr(near, 19) ^ near >> 10;
    const std::uint32_t far_mix = std::rotr(far, 7) ^ std::rotr(far, 18) ^ far >> 3;
    words[i] = near_mix + words[i - 7] + far_mix + words[i - 16];
  }
  auto [a, b, c, d, e, f, g, h] = state_;
  for (std::size_t i = 0; i < 64; ++i) {
    const std::uint32_t choice = (e & f) ^ (~e & g);
    const std::uint32_t majority = (a & b) ^ (a & c) ^ (b & c);
    const std::uint32_t first =
        h + rotations(e, 6, 11, 25) + choice + kRoundConstants[i] + words[i];
    const std::uint32_t second = rotations(a, 2, 13, 22) + majority;
    h = g;
    g = f;
    f = e;
    e = d + first;
    d = c;
    c = b;
    b = a;
    a = first + second;
  }
  const std::array<std::uint32_t, 8> mixed = {a, b, c, d, e, f, g, h};
  for (std::size_t i = 0; i < 8; ++i) state_[i] += mixed[i];
}

void Sha256::add(std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    const std::size_t used = size_ % kBlock;
    if (used == 0 && bytes.size() >= kBlock) {
      add_block(bytes.data());
      bytes = bytes.subspan(kBlock);
      size_ += kBlock;
      continue;
    }
    const std::size_t count = std::min(kBlock - used, bytes.size());
    std::copy_n(bytes.data(), count, rest_.data() + used);
    bytes = bytes.subspan(count);
    size_ += count;
    if (size_ % kBlock == 0) add_block(rest_.data());
  }
}

std::string Sha256::digest() {
  // A bit of 1, zeros, and the length in bits as the last 8 bytes of a block.
  const std::uint64_t bits = 8 * size_;
  std::vector<std::byte> padding(1 + (2 * kBlock - 9 - size_ % kBlock) % kBlock + 8);
  padding[0] = std::byte{0x80};
  for (std::size_t i = 0; i < 8; ++i) {
    padding[padding.size() - 1 - i] = static_cast<std::byte>(bits >> (8 * i));
  }
  add(padding);
  std::string digits;
  for (const std::uint32_t word : state_) {
    for (int shift = 28; shift >= 0; shift -= 4) digits += "0123456789abcdef"[word >> shift & 15];
  }
  return digits;
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/deflate/stretches.h"

#include <immintrin.h>

#include <algorithm>
#include <array>
#include <bit>

namespace kv::polarization {
namespace {

/// Bits of a word.
constexpr std::size_t kWord = 64;

/// For each byte of a block, whether it equals the one before. A word of zeros follows.
using Marks = std::array<std::uint64_t, kMostOfBlock / kWord + 1>;

std::uint64_t mark_some(const std::uint8_t* bytes, std::size_t count, bool has_one_before) {
  std::uint64_t marks = 0;
  for (std::size_t i = has_one_before ? 0 : 1; i < count; ++i) {
    if (bytes[i] == bytes[std::ptrdiff_t(i) - 1]) marks |= std::uint64_t{1} << i;
  }
  return marks;
}

std::uint64_t mark_word(const std::uint8_t* bytes) {
  std::uint64_t marks = 0;
  for (std::size_t i = 0; i < kWord; i += sizeof(__m128i)) {
    const __m128i here = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i));
    const __m128i before = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i - 1));
    const auto equal = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(here, before)));
    marks |= std::uint64_t{equal} << i;
  }
  return marks;
}

void mark_repeats(std::span<const std::uint8_t> bytes, Marks& marks) {
  const std::size_t words = bytes.size() / kWord;
  const std::size_t rest = bytes.size() % kWord;
  for (std::size_t i = 1; i < words; ++i) marks[i] = mark_word(bytes.data() + kWord * i);
  if (words > 0) marks[0] = mark_some(bytes.data(), kWord, false);
  marks[words] = mark_some(bytes.data() + kWord * words, rest, words > 0);
  if (rest > 0) marks[words + 1] = 0;
}

/// Where so many repeats begin that a match takes fewer bits than literals, which in flat areas
/// have short codes: 16. By doubling: two in a row, four, eight, 16.
std::uint64_t starts_of_runs(std::uint64_t word, std::uint64_t next) {
  for (const int step : {1, 2, 4, 8}) {
    word &= word >> step | next << (64 - step);
    next &= next >> step;
  }
  return word;
}

/// The first run at or behind a position; `size` when there is none.
std::size_t next_run(const Marks& marks, std::size_t from, std::size_t size) {
  std::uint64_t allowed = ~std::uint64_t{0} << from % kWord;
  for (std::size_t word = from / kWord; kWord * word < size; ++word) {
    const std::uint64_t starts = starts_of_runs(marks[word], marks[word + 1]) & allowed;
    if (starts != 0) return kWord * word + static_cast<std::size_t>(std::countr_zero(starts));
    allowed = ~std::uint64_t{0};
  }
  return size;
}

std::size_t end_of_run(const Marks& marks, std::size_t run) {
  std::size_t word = run / kWord;
  std::uint64_t others = ~marks[word] & ~std::uint64_t{0} << run % kWord;
  while (others == 0) others = ~marks[++word];
  return kWord * word + static_cast<std::size_t>(std::countr_zero(others));
}

}  // namespace

void find_stretches(std::span<const std::uint8_t> bytes, std::vector<Stretch>& stretches) {
  Marks marks;
  mark_repeats(bytes, marks);
  stretches.clear();
  std::size_t done = 0;
  for (std::size_t run = next_run(marks, 0, bytes.size()); run < bytes.size();) {
    const std::size_t end = end_of_run(marks, run);
    while (end - run >= kShortestMatch) {
      const std::size_t repeats = std::min<std::size_t>(end - run, kLongestMatch);
      stretches.push_back(
          {static_cast<std::uint32_t>(run - done), static_cast<std::uint32_t>(repeats)});
      done = run += repeats;
    }
    run = next_run(marks, end, bytes.size());
  }
  stretches.push_back({static_cast<std::uint32_t>(bytes.size() - done), 0});
}

}  // namespace kv::polarization

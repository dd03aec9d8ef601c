// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/formats/png_filters.h"

#include <immintrin.h>

#include <algorithm>
#include <cstdlib>

namespace kv::polarization {
namespace {

__m128i load(const std::uint8_t* from) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}
void store(std::uint8_t* to, __m128i bytes) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
}

__m128i distance(__m128i a, __m128i b) {
  return _mm_or_si128(_mm_subs_epu8(a, b), _mm_subs_epu8(b, a));
}
__m128i is_at_most(__m128i a, __m128i b) { return _mm_cmpeq_epi8(_mm_min_epu8(a, b), a); }
__m128i choose(__m128i which, __m128i a, __m128i b) {
  return _mm_or_si128(_mm_and_si128(which, a), _mm_andnot_si128(which, b));
}

/// The estimate left + above - corner is as far from the left as the corner is from above, and so
/// on. Its distance to the corner is the sum of the other two, or their difference when they have
/// different signs. A sum above 255 passes for 255: it is no smaller than the others either way.
__m128i paeth(__m128i left, __m128i above, __m128i corner) {
  const __m128i from_left = distance(above, corner);
  const __m128i from_above = distance(left, corner);
  const __m128i signs_differ = _mm_xor_si128(is_at_most(above, corner), is_at_most(left, corner));
  const __m128i from_corner =
      choose(signs_differ, distance(from_left, from_above), _mm_adds_epu8(from_left, from_above));
  const __m128i takes_left =
      _mm_and_si128(is_at_most(from_left, from_above), is_at_most(from_left, from_corner));
  return choose(takes_left, left, choose(is_at_most(from_above, from_corner), above, corner));
}

/// The same of one byte.
int paeth(int left, int above, int corner) {
  const int from_left = std::abs(above - corner);
  const int from_above = std::abs(left - corner);
  const int from_corner = std::abs(left + above - 2 * corner);
  const int other = from_above <= from_corner ? above : corner;
  return from_left <= from_above && from_left <= from_corner ? left : other;
}

/// Sums of each byte and all those before it in steps of a pixel.
template <std::size_t pixel>
__m128i running_sums(__m128i bytes) {
  if constexpr (pixel == 1) bytes = _mm_add_epi8(bytes, _mm_slli_si128(bytes, 1));
  bytes = _mm_add_epi8(bytes, _mm_slli_si128(bytes, 2));
  bytes = _mm_add_epi8(bytes, _mm_slli_si128(bytes, 4));
  return _mm_add_epi8(bytes, _mm_slli_si128(bytes, 8));
}

/// The last pixel in the place of all.
template <std::size_t pixel>
__m128i last_everywhere(__m128i bytes) {
  if constexpr (pixel == 1) bytes = _mm_unpackhi_epi8(bytes, bytes);
  return _mm_shuffle_epi32(_mm_shufflehi_epi16(bytes, 0xFF), 0xFF);
}

/// Both return how many bytes they have done, leaving less than a vector of those that they can do.
template <std::size_t pixel>
std::size_t unfilter_sub(std::span<std::uint8_t> row) {
  __m128i before = _mm_setzero_si128();
  std::size_t i = 0;
  for (; i + sizeof before <= row.size(); i += sizeof before) {
    const __m128i bytes = _mm_add_epi8(running_sums<pixel>(load(&row[i])), before);
    store(&row[i], bytes);
    before = last_everywhere<pixel>(bytes);
  }
  return i;
}

std::size_t unfilter_up(std::span<std::uint8_t> row, const std::uint8_t* above) {
  std::size_t i = 0;
  for (; i + sizeof(__m128i) <= row.size(); i += sizeof(__m128i)) {
    store(&row[i], _mm_add_epi8(load(&row[i]), load(above + i)));
  }
  return i;
}

template <class Predict>
void unfilter_bytes(std::span<std::uint8_t> row, const std::uint8_t* above, std::size_t pixel,
                    std::size_t from, Predict predict) {
  for (std::size_t i = from; i < row.size(); ++i) {
    const int left = i < pixel ? 0 : row[i - pixel];
    const int corner = i < pixel ? 0 : above[i - pixel];
    row[i] = static_cast<std::uint8_t>(row[i] + predict(left, above[i], corner));
  }
}

}  // namespace

void filter(PngFilter kind, std::span<const std::uint8_t> row, const std::uint8_t* above,
            std::size_t pixel, std::uint8_t* stored) {
  if (kind == PngFilter::none) {
    std::copy(row.begin(), row.end(), stored);
    return;
  }
  for (std::size_t i = 0; i < row.size(); i += sizeof(__m128i)) {
    const std::uint8_t* here = row.data() + i;
    const __m128i left = load(here - pixel);
    const __m128i known =
        kind == PngFilter::sub ? left : paeth(left, load(above + i), load(above + i - pixel));
    store(stored + i, _mm_sub_epi8(load(here), known));
  }
}

void unfilter(PngFilter kind, std::span<std::uint8_t> row, const std::uint8_t* above,
              std::size_t pixel) {
  std::size_t done = 0;
  switch (kind) {
    case PngFilter::none:
      return;
    case PngFilter::sub:
      if (pixel == 1) done = unfilter_sub<1>(row);
      if (pixel == 2) done = unfilter_sub<2>(row);
      return unfilter_bytes(row, above, pixel, done, [](int left, int, int) { return left; });
    case PngFilter::up:
      done = unfilter_up(row, above);
      return unfilter_bytes(row, above, pixel, done, [](int, int up, int) { return up; });
    case PngFilter::average:
      return unfilter_bytes(row, above, pixel, 0,
                            [](int left, int up, int) { return (left + up) / 2; });
    case PngFilter::paeth:
      return unfilter_bytes(row, above, pixel, 0,
                            [](int left, int up, int corner) { return paeth(left, up, corner); });
  }
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/compare/image_difference.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

namespace kv::polarization {
namespace {

PixelValue value_of(float number) {
  return {static_cast<double>(number), std::bit_cast<std::uint32_t>(number)};
}
PixelValue value_of(std::uint8_t number) { return {static_cast<double>(number)}; }
PixelValue value_of(std::uint16_t number) { return {static_cast<double>(number)}; }

bool same_bits(float left, float right) {
  return std::bit_cast<std::uint32_t>(left) == std::bit_cast<std::uint32_t>(right);
}
template <class Integer>
bool same_bits(Integer left, Integer right) {
  return left == right;
}

/// How far apart numbers are: infinitely where one alone is none, or is another infinity.
double distance(double left, double right) {
  if (left == right || (std::isnan(left) && std::isnan(right))) return 0;
  const double difference = std::abs(left - right);
  return std::isnan(difference) ? std::numeric_limits<double>::infinity() : difference;
}

std::string shape_text(const Image& image) {
  std::string text = std::to_string(image.width) + " x " + std::to_string(image.height) + " pixels";
  if (image.channels > 1) text += " of " + std::to_string(image.channels) + " channels";
  switch (image.element) {
    case ElementType::uint8:
      return text + ", 8 bits";
    case ElementType::uint16:
      return text + ", 16 bits";
    case ElementType::float32:
      break;
  }
  return text + ", floats";
}

template <class Element>
class RowComparison {
 public:
  RowComparison(double tolerance, std::size_t page, PixelDifferences& differences)
      : tolerance_(tolerance), page_(page), differences_(differences) {}

  void add(const Element* left, const Element* right, int row, int width, int channels) {
    for (int column = 0; column < width; ++column) {
      bool is_equal = true;
      for (int channel = 0; channel < channels; ++channel, ++left, ++right) {
        if (same_bits(*left, *right)) continue;
        const PixelValue a = value_of(*left);
        const PixelValue b = value_of(*right);
        const double apart = distance(a.number, b.number);
        if (tolerance_ > 0 && apart <= tolerance_) continue;
        if (differences_.pixels == 0 && is_equal) {
          differences_.page = page_;
          differences_.column = column;
          differences_.row = row;
          differences_.channel = channel;
          differences_.left = a;
          differences_.right = b;
        }
        differences_.largest = std::max(differences_.largest, apart);
        is_equal = false;
      }
      if (!is_equal) ++differences_.pixels;
    }
  }

 private:
  double tolerance_;
  std::size_t page_;
  PixelDifferences& differences_;
};

template <class Element>
void add_rows(const Image& left, const Image& right, double tolerance, std::size_t page,
              PixelDifferences& differences) {
  RowComparison<Element> comparison(tolerance, page, differences);
  const std::size_t row_elements =
      static_cast<std::size_t>(left.width) * static_cast<std::size_t>(left.channels);
  const Element* left_row = left.as<Element>().data();
  const Element* right_row = right.as<Element>().data();
  for (int row = 0; row < left.height; ++row) {
    if (std::memcmp(left_row, right_row, row_elements * sizeof(Element)) != 0) {
      comparison.add(left_row, right_row, row, left.width, left.channels);
    }
    left_row += row_elements;
    right_row += row_elements;
  }
}

}  // namespace

std::string text_of(const PixelValue& value) {
  std::array<char, 48> text{};
  if (std::isnan(value.number)) {
    // Digits of a C format: streams would need a state for them.
    const int size = std::snprintf(text.data(), text.size(), "NaN (bits %08X)",
                                   static_cast<unsigned>(value.float_bits));
    return {text.data(), static_cast<std::size_t>(size)};
  }
  // A whole number below 2^16 is the same text as a float.
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), static_cast<float>(value.number)).ptr;
  return {text.data(), end};
}

std::string shape_difference(const Image& left, const Image& right) {
  const std::string left_text = shape_text(left);
  const std::string right_text = shape_text(right);
  return left_text == right_text ? "" : left_text + ", against " + right_text;
}

void add_differences(const Image& left, const Image& right, double tolerance, std::size_t page,
                     PixelDifferences& differences) {
  differences.all_pixels +=
      static_cast<std::size_t>(left.width) * static_cast<std::size_t>(left.height);
  switch (left.element) {
    case ElementType::uint8:
      return add_rows<std::uint8_t>(left, right, tolerance, page, differences);
    case ElementType::uint16:
      return add_rows<std::uint16_t>(left, right, tolerance, page, differences);
    case ElementType::float32:
      return add_rows<float>(left, right, tolerance, page, differences);
  }
}

}  // namespace kv::polarization

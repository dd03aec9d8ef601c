// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "kv/image_files/image_reader.h"

namespace kv::polarization {

/// An element of an image: its value, and of a float also its bits.
struct PixelValue {
  double number = 0;
  std::uint32_t float_bits = 0;  ///< 0 for whole numbers
};

/// The value in as few digits as tell it from its neighbours; -0 has its sign, a NaN its bits.
std::string text_of(const PixelValue& value);

/// How the pixels of two files differ.
struct PixelDifferences {
  std::size_t pixels = 0;      ///< that differ, in whatever channel
  std::size_t all_pixels = 0;  ///< that were compared
  double largest = 0;          ///< of any channel; infinite where only one value is a number

  // The first that differs, if any does. All count from 0.
  std::size_t page = 0;
  int column = 0;
  int row = 0;
  int channel = 0;
  PixelValue left;
  PixelValue right;
};

/// The images' sizes, channels and elements when these differ, told as one line; else empty.
std::string shape_difference(const Image& left, const Image& right);

/// Compares the pixels of two images of the same shape, which are of this page, and adds what
/// differs. At a tolerance of 0 values are equal when their bits are, so that 0 is not -0, and a
/// NaN is that of the same bits; above it when they are at most so far apart, and all NaNs are.
/// Stretches of equal rows cost as much as reading them.
void add_differences(const Image& left, const Image& right, double tolerance, std::size_t page,
                     PixelDifferences& differences);

}  // namespace kv::polarization

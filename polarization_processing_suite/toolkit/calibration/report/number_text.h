// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "kv/calibration/calibration.h"

namespace kv::polarization {

// Numbers for people, in UTF-8, whatever the locale of the process is. What is not finite is
// "unknown".

std::string fixed(double value, int decimals);

/// That many significant digits; those before the point are all written up to ten millions.
std::string significant(double value, int digits = 3);

/// The same with a unit behind it, empty for pure numbers.
std::string with_unit(double value, std::string_view unit, int digits = 3);

/// A value with its error, which has two significant digits, and a unit.
std::string with_error(const Measured& measured, std::string_view unit = {});

/// In groups of three digits, where there are more than four.
std::string count_text(std::uint64_t count);

/// A ratio as a percentage.
std::string percentage(double ratio, int digits = 2);

/// A count and its noun, which takes an s for more than one.
std::string counted(std::uint64_t count, std::string_view noun);

/// For coordinates of SVG: two decimals, and 0 for what is not finite.
std::string coordinate(double value);

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <bit>
#include <cstdint>

namespace kv {

// Minimax cubic x * (c1 + c3 * x^2) for the arctangent on -1..1, within 0.004952 radian.
inline constexpr float kAtanLinear = std::bit_cast<float>(0x3F78EED2u);  //  0.9723941
inline constexpr float kAtanCubic = std::bit_cast<float>(0xBE448E01u);   // -0.19194795

inline constexpr float kHalfPi = std::bit_cast<float>(0x3FC90FDBu);
inline constexpr float kPi = std::bit_cast<float>(0x40490FDBu);

// From the angle of (S1, S2) in radians to half of it in degrees, 90 / pi. One unit in the last
// place below the nearest float, so that pi gives 90 and pi / 2 gives 45 exactly.
inline constexpr float kDegreesOfAzimuth = std::bit_cast<float>(0x41E52EE0u);  // 28.647888

// Azimuth runs from -90 to +90 degrees; moved up by the offset it covers the range from 0.
inline constexpr int kAzimuthOffset = 90;
inline constexpr int kAzimuthRange = 180;

inline constexpr std::uint32_t kSignBit = 0x80000000u;

}  // namespace kv

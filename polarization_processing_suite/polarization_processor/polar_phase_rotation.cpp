// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "polarization_processor/polar_phase_rotation.h"

#include <array>

namespace kv {
namespace {

using Rotation = std::array<std::int32_t, 4>;
constexpr Rotation kRowShift{1, 0, 3, 2};
constexpr Rotation kColumnShift{3, 2, 1, 0};
constexpr Rotation kDiagonalShift{2, 3, 0, 1};

}  // namespace

std::int32_t rotate_polar_phase(std::int32_t polar_phase, std::int32_t x_origin,
                                std::int32_t y_origin) {
  // Signed remainders: an odd negative origin has remainder -1 and ends in the diagonal shift.
  const std::int32_t x_parity = x_origin % 2;
  const std::int32_t y_parity = y_origin % 2;
  if (x_parity == 0 && y_parity == 0) return polar_phase;

  const Rotation& rotation = x_parity == 0 && y_parity == 1   ? kRowShift
                             : x_parity == 1 && y_parity == 0 ? kColumnShift
                                                              : kDiagonalShift;
  return rotation[polar_phase < 0 ? 0 : static_cast<std::size_t>(polar_phase)];
}

}  // namespace kv

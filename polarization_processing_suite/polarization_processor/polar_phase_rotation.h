// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

namespace kv {

/// Phase of a frame's own top-left pixel, from that of the sensor's and the frame's origin on it.
std::int32_t rotate_polar_phase(std::int32_t polar_phase, std::int32_t x_origin,
                                std::int32_t y_origin);

}  // namespace kv

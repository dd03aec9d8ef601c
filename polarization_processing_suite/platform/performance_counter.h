// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

namespace kv::platform {

/// Ticks per second of the counter. False when the platform has none.
bool read_counter_frequency(std::int64_t& frequency);

bool read_counter(std::int64_t& count);

}  // namespace kv::platform

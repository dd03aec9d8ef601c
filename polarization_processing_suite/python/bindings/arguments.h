// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <utility>

#include "kv/polarization/mosaic.h"
#include "kv/polarization/noise.h"
#include "python/bindings/arrays.h"

namespace kv::polarization::python {

// What arguments in Python's types stand for. Each throws Fault of kind argument for those out of
// their range.

using Origin = std::pair<int, int>;            ///< column, row
using NoiseNumbers = std::pair<float, float>;  ///< gain, read noise
using GivenClipLevel = std::optional<std::int64_t>;

Mosaic mosaic_of(int phase, const Origin& origin);
SampleLayout layout_of(std::optional<int> bit_depth, bool left_aligned);
std::optional<std::uint16_t> clip_level_of(const GivenClipLevel& given);
std::optional<SensorNoise> noise_of(const std::optional<NoiseNumbers>& given);

/// As the toolkit takes it: 1 to 1024, or 0 for all.
int thread_count(std::int64_t threads);

}  // namespace kv::polarization::python

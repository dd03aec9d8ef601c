// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <memory>
#include <span>

#include "toolkit/calibration/fit/stack_intake.h"

namespace kv::polarization {

// The bytes of a part: head, total size, the plan's bytes, what is kept of each frame that came,
// and the sums of the pixels if there are any. What a frame's means tell by the plan is computed
// again, not believed.

std::size_t part_size(const StackIntake& part);

/// Memory of that size.
void write_part(const StackIntake& part, std::span<std::byte> memory, WorkerPool& pool);

/// Throws Fault of kind argument for bytes that are not those of a part.
StackIntake part_of(std::span<const std::byte> bytes, WorkerPool& pool);

}  // namespace kv::polarization

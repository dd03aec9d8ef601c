// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <functional>

namespace kv::polarization {

/// Calls a function on the calling thread, and at the same time on others beside it: that many in
/// all, or as many as the system has for us. Returns when all calls have. Throws what one of them
/// throws.
void run_side_by_side(std::size_t threads, const std::function<void()>& work);

}  // namespace kv::polarization

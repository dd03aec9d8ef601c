// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <functional>

namespace kv::polarization {

/// Calls work(index) for each index below `count`, side by side on all cores; indices begin in
/// their order. After a call that throws, and after Ctrl-C, no other one begins; an exception is
/// thrown when those that run are done.
void for_each_index(std::size_t count, const std::function<void(std::size_t)>& work);

}  // namespace kv::polarization

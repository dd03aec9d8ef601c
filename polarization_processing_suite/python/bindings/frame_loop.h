// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "python/bindings/engine_pool.h"

namespace kv::polarization::python {

/// Calls work(engine, index) for each index below `count` without the interpreter's lock, on up to
/// that many threads, 0 for as many as the machine runs: a thread a frame where there are enough
/// frames, several threads a frame where there are not. A correction costs memory and a start of
/// its own for each engine, so that with one all threads share the frame.
///
/// Python's signals, such as Ctrl-C, end it between two frames. To be called with the lock held.
/// Throws Fault of kind argument for a number of threads that no machine has.
void for_each_frame(EnginePool& engines, std::size_t count, std::int64_t threads,
                    const std::function<void(Engine&, std::size_t)>& work);

/// Calls work(index) likewise on this thread alone, frame after frame.
void for_each_frame(std::size_t count, const std::function<void(std::size_t)>& work);

}  // namespace kv::polarization::python

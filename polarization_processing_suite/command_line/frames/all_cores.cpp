// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/frames/all_cores.h"

#include <atomic>

#include "platform/process.h"
#include "toolkit/api/worker_pool.h"

namespace kv::polarization {

void for_each_index(std::size_t count, const std::function<void(std::size_t)>& work) {
  std::atomic<std::size_t> next = 0;
  const auto work_through = [&](int) {
    try {
      for (std::size_t i = next++; i < count && !platform::interrupted(); i = next++) work(i);
    } catch (...) {
      next = count;
      throw;
    }
  };
  WorkerPool pool(0);
  pool.run(pool.threads(), work_through);
}

}  // namespace kv::polarization

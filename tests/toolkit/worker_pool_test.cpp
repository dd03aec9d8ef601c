// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/api/worker_pool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>

using kv::polarization::WorkerPool;

namespace {

TEST(WorkerPool, HandsOnWhatAnyPartThrows) {
  for (const int threads : {0, 1, 3}) {
    WorkerPool pool(threads);
    const int parts = pool.threads();
    EXPECT_EQ(parts, WorkerPool::threads_of(threads));
    for (int failing = 0; failing < parts; ++failing) {
      std::atomic<int> done = 0;
      const auto work = [&](int part) {
        ++done;
        if (part == failing) throw std::runtime_error(std::to_string(part));
      };
      EXPECT_THROW(pool.run(parts, work), std::runtime_error) << threads << " threads";
      EXPECT_EQ(done, parts);
    }
  }
}

}  // namespace

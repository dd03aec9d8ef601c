// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/batch/side_by_side.h"

#include <future>
#include <system_error>
#include <vector>

namespace kv::polarization {

void run_side_by_side(std::size_t threads, const std::function<void()>& work) {
  std::vector<std::future<void>> others;
  try {
    for (std::size_t i = 1; i < threads; ++i) {
      others.push_back(std::async(std::launch::async, work));
    }
  } catch (const std::system_error&) {
    // The threads that are there do the work.
  }
  // A future of std::async waits in its destructor: all calls come to their ends, even if this
  // thread's own one throws.
  work();
  for (std::future<void>& other : others) other.get();
}

}  // namespace kv::polarization

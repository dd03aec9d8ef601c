// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace kv::polarization {

/// Threads that wait for work between calls. A wait costs no processor time; waking them, some ten
/// microseconds.
class WorkerPool {
 public:
  /// The threads that a count stands for: 0 for as many as the processor runs at once. Throws Fault
  /// of kind argument when it is negative or above 1024.
  static int threads_of(int count);

  /// threads_of(threads) less one, as the caller of run() works too; fewer where there is no
  /// memory, or the system gives no more.
  explicit WorkerPool(int threads);
  ~WorkerPool();
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  int threads() const { return static_cast<int>(workers_.size()) + 1; }

  /// Calls work(0) to work(parts - 1), each on another thread; parts is at most threads(). Returns
  /// when all are done. Throws what the first of them threw, in the order of their numbers.
  void run(int parts, const std::function<void(int)>& work);

 private:
  void wait_for_work(int part);
  void attempt(int part) noexcept;

  std::mutex mutex_;
  std::condition_variable begin_;
  std::condition_variable end_;
  const std::function<void(int)>* work_ = nullptr;  // while a run is on
  int parts_ = 0;
  int unfinished_ = 0;
  unsigned round_ = 0;
  bool stop_ = false;
  std::vector<std::exception_ptr> failures_;
  std::vector<std::thread> workers_;
};

}  // namespace kv::polarization

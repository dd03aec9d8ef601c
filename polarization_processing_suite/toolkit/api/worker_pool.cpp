// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/api/worker_pool.h"

#include <algorithm>
#include <new>
#include <string>
#include <system_error>

#include "kv/polarization/fault.h"

namespace kv::polarization {

int WorkerPool::threads_of(int count) {
  constexpr int most = 1024;
  if (count < 0 || count > most) {
    throw Fault(FaultKind::argument, std::to_string(count) + " threads cannot be had; it must be " +
                                         "1 to " + std::to_string(most) +
                                         ", or 0 for as many as the processor runs");
  }
  return count > 0 ? count : std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

WorkerPool::WorkerPool(int threads) {
  const int most = threads_of(threads);
  failures_.resize(static_cast<std::size_t>(most));
  try {
    for (int part = 1; part < most; ++part) {
      workers_.emplace_back([this, part] { wait_for_work(part); });
    }
  } catch (const std::system_error&) {
    // The system gives no more threads; those that there are do the work.
  } catch (const std::bad_alloc&) {
    // Likewise. Let out, it would end the process: threads are running that nobody would join.
  }
}

WorkerPool::~WorkerPool() {
  {
    const std::lock_guard lock(mutex_);
    stop_ = true;
  }
  begin_.notify_all();
  for (std::thread& worker : workers_) worker.join();
}

void WorkerPool::run(int parts, const std::function<void(int)>& work) {
  std::fill(failures_.begin(), failures_.end(), nullptr);
  if (parts > 1) {
    const std::lock_guard lock(mutex_);
    work_ = &work;
    parts_ = parts;
    unfinished_ = parts - 1;
    ++round_;
    begin_.notify_all();
  } else {
    work_ = &work;
  }
  attempt(0);
  if (parts > 1) {
    std::unique_lock lock(mutex_);
    end_.wait(lock, [this] { return unfinished_ == 0; });
  }
  for (const std::exception_ptr& failure : failures_) {
    if (failure) std::rethrow_exception(failure);
  }
}

void WorkerPool::wait_for_work(int part) {
  std::unique_lock lock(mutex_);
  for (unsigned seen = 0;;) {
    begin_.wait(lock, [&] { return stop_ || (round_ != seen && part < parts_); });
    if (stop_) return;
    seen = round_;
    lock.unlock();
    attempt(part);
    lock.lock();
    if (--unfinished_ == 0) end_.notify_one();
  }
}

void WorkerPool::attempt(int part) noexcept {
  try {
    (*work_)(part);
  } catch (...) {
    failures_[static_cast<std::size_t>(part)] = std::current_exception();
  }
}

}  // namespace kv::polarization

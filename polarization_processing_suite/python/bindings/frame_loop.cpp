// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "python/bindings/frame_loop.h"

#include <pybind11/pybind11.h>

#include <atomic>
#include <chrono>

#include "python/bindings/arguments.h"
#include "toolkit/api/worker_pool.h"

namespace kv::polarization::python {
namespace {

/// Looks for signals from time to time. Handlers run in Python's main thread alone, and in others
/// this finds nothing.
class SignalWatch {
 public:
  /// Whether a handler raised an exception, which waits to be thrown.
  bool raised() {
    const auto time = Clock::now();
    if (time < next_) return false;
    next_ = time + std::chrono::milliseconds(50);
    const pybind11::gil_scoped_acquire lock;
    return PyErr_CheckSignals() != 0;
  }

 private:
  using Clock = std::chrono::steady_clock;
  Clock::time_point next_ = Clock::now() + std::chrono::milliseconds(50);
};

class FrameLoop {
 public:
  FrameLoop(EnginePool& engines, std::size_t count,
            const std::function<void(Engine&, std::size_t)>& work)
      : engines_(engines), count_(count), work_(work) {}

  /// Frame after frame, in their order.
  void on_this_thread(int threads) {
    EnginePool::Lease engine(engines_, threads);
    SignalWatch signals;
    for (std::size_t index = 0; index < count_ && !raised_; ++index) {
      work_(*engine, index);
      raised_ = index + 1 < count_ && signals.raised();
    }
  }

  void side_by_side(int threads) {
    WorkerPool(threads).run(threads, [this](int part) {
      try {
        share_of(part);
      } catch (...) {
        next_ = count_;
        throw;
      }
    });
  }

  bool raised() const { return raised_; }

 private:
  void share_of(int part) {
    EnginePool::Lease engine(engines_, 1);
    SignalWatch signals;
    for (std::size_t index; !raised_ && (index = next_++) < count_;) {
      work_(*engine, index);
      const bool is_callers = part == 0;
      if (is_callers && signals.raised()) raised_ = true;
    }
  }

  EnginePool& engines_;
  std::size_t count_;
  const std::function<void(Engine&, std::size_t)>& work_;
  std::atomic<std::size_t> next_ = 0;
  std::atomic<bool> raised_ = false;
};

}  // namespace

void for_each_frame(std::size_t count, const std::function<void(std::size_t)>& work) {
  bool raised = false;
  {
    const pybind11::gil_scoped_release unlocked;
    SignalWatch signals;
    for (std::size_t index = 0; index < count && !raised; ++index) {
      work(index);
      raised = index + 1 < count && signals.raised();
    }
  }
  if (raised) throw pybind11::error_already_set();
}

void for_each_frame(EnginePool& engines, std::size_t count, std::int64_t threads,
                    const std::function<void(Engine&, std::size_t)>& work) {
  const int wanted = thread_count(threads);
  FrameLoop loop(engines, count, work);
  {
    const pybind11::gil_scoped_release unlocked;
    const int most = WorkerPool::threads_of(wanted);
    const bool enough = count >= 2 * static_cast<std::size_t>(most);
    if (most > 1 && enough && !engines.sensor().calibration) {
      loop.side_by_side(most);
    } else {
      loop.on_this_thread(most);
    }
  }
  if (loop.raised()) throw pybind11::error_already_set();
}

}  // namespace kv::polarization::python

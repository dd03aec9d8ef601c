// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "python/bindings/engine.h"

namespace kv::polarization::python {

/// Engines that wait for their next frames, so that any number of Python's threads may use one
/// processor at the same time, and memory is used again.
class EnginePool {
 public:
  /// The sensor must outlive it.
  explicit EnginePool(const Sensor& sensor);
  ~EnginePool();
  EnginePool(const EnginePool&) = delete;
  EnginePool& operator=(const EnginePool&) = delete;

  const Sensor& sensor() const { return sensor_; }

  /// An engine that is the holder's alone.
  class Lease {
   public:
    Lease(EnginePool& pool, int threads)
        : pool_(pool), threads_(threads), engine_(pool.take(threads)) {}
    ~Lease() { pool_.give_back(threads_, std::move(engine_)); }
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;

    Engine& operator*() { return *engine_; }

   private:
    EnginePool& pool_;
    int threads_;
    std::unique_ptr<Engine> engine_;
  };

 private:
  std::unique_ptr<Engine> take(int threads);
  void give_back(int threads, std::unique_ptr<Engine> engine) noexcept;
  void leave_to_parent();

  const Sensor& sensor_;
  std::mutex mutex_;
  std::map<int, std::vector<std::unique_ptr<Engine>>> idle_;  // by their threads
  int process_;                                               // that their threads are of
};

}  // namespace kv::polarization::python

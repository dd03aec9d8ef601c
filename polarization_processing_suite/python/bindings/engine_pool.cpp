// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "python/bindings/engine_pool.h"

#include <utility>

#include "platform/process.h"

namespace kv::polarization::python {

EnginePool::EnginePool(const Sensor& sensor)
    : sensor_(sensor), process_(platform::process_number()) {}

EnginePool::~EnginePool() { leave_to_parent(); }

/// A forked process has the engines, but not their threads: to use or end one would wait for ever.
void EnginePool::leave_to_parent() {
  const int process = platform::process_number();
  if (process == process_) return;
  process_ = process;
  for (auto& [threads, engines] : idle_) {
    for (std::unique_ptr<Engine>& engine : engines) static_cast<void>(engine.release());
  }
  idle_.clear();
}

std::unique_ptr<Engine> EnginePool::take(int threads) {
  {
    const std::lock_guard lock(mutex_);
    leave_to_parent();
    std::vector<std::unique_ptr<Engine>>& engines = idle_[threads];
    if (!engines.empty()) {
      std::unique_ptr<Engine> engine = std::move(engines.back());
      engines.pop_back();
      return engine;
    }
  }
  return std::make_unique<Engine>(sensor_, threads);
}

void EnginePool::give_back(int threads, std::unique_ptr<Engine> engine) noexcept {
  try {
    const std::lock_guard lock(mutex_);
    idle_[threads].push_back(std::move(engine));
  } catch (const std::bad_alloc&) {
    // Without room to remember it, it ends here.
  }
}

}  // namespace kv::polarization::python

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "polarization_processor/module_state.h"

#include <optional>

namespace kv {

LogClient* module_log_client = nullptr;
std::uint32_t module_ref_count = 0;

namespace {

/// Sets the module up when the library loads and covers a missing terminate when it unloads.
struct LoadAndUnload {
  std::optional<std::mutex> mutex{std::in_place};

  ~LoadAndUnload() {
    mutex.reset();
    delete module_log_client;
    module_log_client = nullptr;
  }
};

LoadAndUnload load_and_unload;

}  // namespace

std::mutex& module_mutex() { return *load_and_unload.mutex; }

}  // namespace kv

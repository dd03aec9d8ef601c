// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <mutex>

#include "polarization_processor/log_client.h"

namespace kv {

/// Whether this is null is the only test of the module's being initialised.
extern LogClient* module_log_client;

/// Calls of initialize not yet matched by a terminate.
extern std::uint32_t module_ref_count;

/// Held inside initialize and terminate only.
std::mutex& module_mutex();

}  // namespace kv

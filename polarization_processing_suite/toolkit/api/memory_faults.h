// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <new>

#include "kv/polarization/fault.h"

namespace kv::polarization {

/// Runs work whose small allocations may fail, and tells that as a Fault.
template <class Work>
decltype(auto) with_memory_faults(Work work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    throw Fault(FaultKind::memory, "there is no memory left; close other programs and try again");
  }
}

}  // namespace kv::polarization

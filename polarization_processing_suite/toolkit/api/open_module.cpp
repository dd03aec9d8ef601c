// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/api/open_module.h"

#include <mutex>

#include "kevrinth_qrm_polarization_processor.h"
#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

std::mutex opening;
bool failed_to_open = false;

}  // namespace

OpenModule::OpenModule() {
  const std::lock_guard lock(opening);
  if (failed_to_open) {
    throw Fault(FaultKind::state,
                "the library could not be opened before, and stays closed in this process; end the "
                "program and start it again with more memory");
  }
  try {
    kv_polarization_processor_module_initialize();
  } catch (...) {
    failed_to_open = true;
    throw;
  }
}

OpenModule::~OpenModule() { kv_polarization_processor_module_terminate(); }

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <windows.h>

#include <atomic>
#include <csignal>

#include "platform/process.h"
#include "platform/registered_files.h"

namespace kv::platform {
namespace {

std::atomic<bool> interruption = false;

/// In a thread of its own. Where the window is closed or the system ends, the process ends when it
/// returns.
BOOL WINAPI on_interrupt(DWORD event) {
  const bool may_go_on = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
  if (!interruption.exchange(true) && may_go_on) return TRUE;
  remove_registered_files();
  TerminateProcess(GetCurrentProcess(), 128 + SIGINT);
  return TRUE;
}

}  // namespace

void defer_interrupts() { SetConsoleCtrlHandler(on_interrupt, TRUE); }

bool interrupted() { return interruption; }

}  // namespace kv::platform

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <unistd.h>

#include <atomic>
#include <csignal>

#include "platform/process.h"
#include "platform/registered_files.h"

namespace kv::platform {
namespace {

std::atomic<bool> interruption = false;
static_assert(std::atomic<bool>::is_always_lock_free);

void on_interrupt(int signal) {
  if (!interruption.exchange(true)) return;
  remove_registered_files();
  _exit(128 + signal);
}

}  // namespace

void defer_interrupts() {
  struct sigaction before {};
  struct sigaction action {};
  action.sa_handler = on_interrupt;  // without SA_RESTART, so that waits end
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    sigaction(signal, nullptr, &before);
    if (signal != SIGHUP || before.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);
  }
}

bool interrupted() { return interruption; }

}  // namespace kv::platform

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/process.h"

#include <csignal>

namespace kv::platform {

void ignore_file_size_signal() {
#if defined(SIGXFSZ)
  std::signal(SIGXFSZ, SIG_IGN);
#endif
}

void ignore_broken_pipes() {
#if defined(SIGPIPE)
  std::signal(SIGPIPE, SIG_IGN);
#endif
}

}  // namespace kv::platform

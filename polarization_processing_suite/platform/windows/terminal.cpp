// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/terminal.h"

#include <windows.h>

namespace kv::platform {

int output_columns() {
  CONSOLE_SCREEN_BUFFER_INFO info;
  if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info)) return 0;
  return info.srWindow.Right - info.srWindow.Left + 1;
}

}  // namespace kv::platform

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/run_tool.h"
#include "platform/process.h"

int main(int argc, char** argv) {
  kv::platform::fill_standard_streams();
  kv::platform::defer_interrupts();
  kv::platform::ignore_file_size_signal();
  kv::platform::ignore_broken_pipes();
  return kv::polarization::run_tool(kv::platform::command_line_words(argc, argv));
}

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <iostream>

#include "command_line/exit_status.h"
#include "command_line/messages.h"
#include "command_line/run_tool.h"
#include "platform/process.h"

using namespace kv::polarization;

namespace {

/// What a command tells may be all that it was run for. A reader that has seen enough is no fault.
int with_output_checked(int status) {
  std::cout.flush();
  if (std::cout || status != exit_success || kv::platform::output_reader_has_gone()) return status;
  complain("standard output did not take all that there is to tell; lead it where there is room");
  return exit_some_failed;
}

}  // namespace

int main(int argc, char** argv) {
  kv::platform::fill_standard_streams();
  kv::platform::defer_interrupts();
  kv::platform::ignore_file_size_signal();
  kv::platform::ignore_broken_pipes();
  return with_output_checked(run_tool(kv::platform::command_line_words(argc, argv)));
}

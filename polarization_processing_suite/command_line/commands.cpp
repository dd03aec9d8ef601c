// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/command.h"

namespace kv::polarization {

Commands make_commands(CLI::App& app) {
  Commands commands;
  for (const auto make : {make_transform_command, make_measure_command, make_view_command,
                          make_info_command, make_bench_command, make_again_command,
                          make_simulate_command, make_calibrate_command, make_identify_command,
                          make_compare_command, make_manual_command, make_completion_command}) {
    commands.push_back(make(app));
  }
  return commands;
}

}  // namespace kv::polarization

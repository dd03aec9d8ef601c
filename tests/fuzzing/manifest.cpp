// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Manifests of a stack, and lists of regions: the tables of comma-separated values that are read.
#include "command_line/calibrate/stack_manifest.h"
#include "command_line/measure/region_list.h"
#include "fuzzing/work_folder.h"

namespace kv::fuzzing {

void set_up() {}

void fuzz(Choices choices) {
  static const WorkFolder folder;
  const bool regions = choices.once_in(2);
  const auto file = folder.write("table.csv", text_of(choices.rest()));
  if (regions) {
    succeeds([&] { polarization::read_regions(file); });
  } else {
    succeeds([&] { polarization::read_manifest(file); });
  }
}

}  // namespace kv::fuzzing

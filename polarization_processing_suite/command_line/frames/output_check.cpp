// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/frames/output_check.h"

#include <algorithm>
#include <system_error>

#include "command_line/path_text.h"
#include "kv/polarization/fault.h"

namespace kv::polarization {

void check_is_no_input(const std::filesystem::path& output,
                       const std::vector<std::filesystem::path>& inputs) {
  const bool is_input = std::ranges::any_of(inputs, [&output](const std::filesystem::path& input) {
    std::error_code one_is_missing;
    return std::filesystem::equivalent(input, output, one_is_missing);
  });
  if (is_input) {
    throw Fault(FaultKind::argument,
                text_of(output) + " is an input, which would be replaced; name another output");
  }
}

}  // namespace kv::polarization

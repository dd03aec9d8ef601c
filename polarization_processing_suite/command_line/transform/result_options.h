// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "command_line/options/option_list.h"
#include "command_line/transform/transform_options.h"

namespace kv::polarization {

/// --planes, --output-max, --format, --compression, --pictures and --dolp-white: what frames
/// become.
void add_result_options(OptionList& options, Recipe& recipe);

}  // namespace kv::polarization

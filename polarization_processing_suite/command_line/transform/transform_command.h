// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "command_line/transform/transform_options.h"

namespace kv::polarization {

/// Transforms all frames and reports on the standard streams. Returns an exit status. Throws before
/// anything is written when the options cannot be done.
int run_transform(const TransformOptions& options);

}  // namespace kv::polarization

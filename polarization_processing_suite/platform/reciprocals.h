// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace kv::platform {

/// What the processor's approximate reciprocal gives for 8192 numbers from 1 to 2, which is more
/// than the entries of its table: processors with equal bytes here give equal planes.
std::string reciprocal_table();

}  // namespace kv::platform

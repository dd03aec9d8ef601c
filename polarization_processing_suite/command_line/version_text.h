// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "toolkit/machine/build.h"

namespace kv::polarization {

/// What --version tells: the program with its version, and how it was made, a fact a line; without
/// the last end of line.
std::string version_text(const Build& build);

}  // namespace kv::polarization

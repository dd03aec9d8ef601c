// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "command_line/json_type.h"
#include "toolkit/machine/build.h"
#include "toolkit/machine/machine.h"

namespace kv::polarization {

Json json_of(const Machine& machine);
Json json_of(const Build& build);

}  // namespace kv::polarization

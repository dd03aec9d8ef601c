// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "command_line/measure/measurement.h"

namespace kv::polarization {

/// An aligned table for people.
std::string table_of(const std::vector<Measurement>& measurements);

}  // namespace kv::polarization

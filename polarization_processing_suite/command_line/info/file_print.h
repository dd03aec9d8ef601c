// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "command_line/info/file_report.h"
#include "command_line/json_type.h"
#include "toolkit/machine/machine.h"

namespace kv::polarization {

// What is known of a file or a machine, in lines for people and as an object for programs. Numbers
// that there are not, such as the redundancy of a black frame, are null in the object.

std::string lines_of(const FileReport& report, const std::optional<Mosaic>& mosaic);
Json json_of(const FileReport& report, const std::optional<Mosaic>& mosaic);

std::string lines_of(const Machine& machine);

}  // namespace kv::polarization

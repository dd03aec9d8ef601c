// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "command_line/measure/measurement.h"

namespace kv::polarization {

enum class MeasurementForm : std::uint8_t { table, csv, json };

/// In the order of MeasurementForm, as --as and endings of files name them.
std::vector<std::string> measurement_forms();
std::optional<MeasurementForm> measurement_form_named(std::string_view name);

/// The measurements as a text, whose last line ends. Numbers of CSV and JSON are read back to the
/// same bits; what there is not, such as errors without noise, is an empty field or null. A table
/// rounds to two digits of the least error of each kind.
std::string text_of(const std::vector<Measurement>& measurements, MeasurementForm form);

}  // namespace kv::polarization

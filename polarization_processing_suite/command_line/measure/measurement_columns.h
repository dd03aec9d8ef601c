// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "command_line/measure/measurement.h"

namespace kv::polarization {

/// A NaN stands for a value that there is not.
using ColumnValue = std::variant<std::string, std::uint64_t, double>;

/// What is told in tables for people, which files for programs tell in full.
enum class InTable : std::uint8_t {
  always,
  if_told,  ///< when any measurement has another value than 0, or the page 1 of 1
  never
};

/// Values of one kind, and their errors, stand with the same decimals in a table.
enum class Quantity : std::uint8_t { counts, stokes, dolp, angle };

/// What is told of a measurement: all forms of output are made from this one list.
struct MeasurementColumn {
  std::string name;     ///< in files
  std::string heading;  ///< of a table, with the unit
  InTable in_table = InTable::always;
  Quantity quantity = Quantity::counts;
  bool is_error = false;
  ColumnValue (*value)(const Measurement&);
};

const std::vector<MeasurementColumn>& measurement_columns();

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/measure/measurement_table.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "command_line/measure/measurement_columns.h"
#include "command_line/messages.h"

namespace kv::polarization {
namespace {

constexpr int kMostDecimals = 8;
constexpr std::size_t kGap = 2;

/// Where no error tells how many mean anything; by Quantity.
constexpr std::array<int, 4> kUsualDecimals = {0, 2, 4, 2};

bool is_told(const ColumnValue& value, const Measurement& measurement,
             const MeasurementColumn& column) {
  if (column.name == "page") return measurement.place.pages > 1;
  if (const auto* count = std::get_if<std::uint64_t>(&value)) return *count != 0;
  const auto* number = std::get_if<double>(&value);
  return number == nullptr || std::isfinite(*number);
}

bool is_shown(const MeasurementColumn& column, const std::vector<Measurement>& measurements) {
  if (column.in_table != InTable::if_told) return column.in_table == InTable::always;
  return std::ranges::any_of(measurements, [&column](const Measurement& measurement) {
    return is_told(column.value(measurement), measurement, column);
  });
}

/// So many that the least error of the quantity has two digits.
int decimals_of(Quantity quantity, const std::vector<Measurement>& measurements) {
  double least = 0;
  for (const MeasurementColumn& column : measurement_columns()) {
    if (!column.is_error || column.quantity != quantity) continue;
    for (const Measurement& measurement : measurements) {
      const double error = std::get<double>(column.value(measurement));
      if (error > 0 && (least == 0 || error < least)) least = error;
    }
  }
  if (least == 0) return kUsualDecimals[static_cast<std::size_t>(quantity)];
  return std::clamp(1 - static_cast<int>(std::floor(std::log10(least))), 0, kMostDecimals);
}

std::string cell_of(const ColumnValue& value, int decimals) {
  if (const auto* text = std::get_if<std::string>(&value)) return printable(*text);
  if (const auto* count = std::get_if<std::uint64_t>(&value)) return std::to_string(*count);
  const double number = std::get<double>(value);
  if (!std::isfinite(number)) return "-";
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%.*f", decimals, number);
  return text.data();
}

/// Signs of a UTF-8 text, each of which terminals show as one place.
std::size_t signs_of(const std::string& text) {
  return static_cast<std::size_t>(
      std::ranges::count_if(text, [](char byte) { return (byte & 0xC0) != 0x80; }));
}

struct TableColumn {
  std::vector<std::string> cells;  ///< the heading first
  bool is_text = false;
  std::size_t width = 0;  ///< signs
};

TableColumn table_column_of(const MeasurementColumn& column,
                            const std::vector<Measurement>& measurements) {
  TableColumn result;
  result.cells.push_back(column.heading);
  const int decimals = decimals_of(column.quantity, measurements);
  for (const Measurement& measurement : measurements) {
    const ColumnValue value = column.value(measurement);
    result.is_text = std::holds_alternative<std::string>(value);
    result.cells.push_back(cell_of(value, decimals));
  }
  for (const std::string& cell : result.cells) {
    result.width = std::max(result.width, signs_of(cell));
  }
  return result;
}

}  // namespace

std::string table_of(const std::vector<Measurement>& measurements) {
  std::vector<TableColumn> columns;
  for (const MeasurementColumn& column : measurement_columns()) {
    if (is_shown(column, measurements)) columns.push_back(table_column_of(column, measurements));
  }
  std::string table;
  for (std::size_t row = 0; row <= measurements.size(); ++row) {
    std::string line;
    for (const TableColumn& column : columns) {
      const std::string& cell = column.cells[row];
      const std::string blanks(column.width - signs_of(cell), ' ');
      if (!line.empty()) line.append(kGap, ' ');
      line += column.is_text ? cell + blanks : blanks + cell;
    }
    table += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
  }
  return table;
}

}  // namespace kv::polarization

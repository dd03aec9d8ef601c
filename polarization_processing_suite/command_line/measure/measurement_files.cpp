// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/measure/measurement_files.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "command_line/json_output.h"
#include "command_line/measure/measurement_columns.h"
#include "command_line/measure/measurement_table.h"
#include "command_line/number_text.h"

namespace kv::polarization {
namespace {

constexpr std::array<std::string_view, 3> kFormNames = {"table", "csv", "json"};

std::string quoted(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string result = "\"";
  for (const char sign : text) result += sign == '"' ? std::string("\"\"") : std::string(1, sign);
  return result + "\"";
}

std::string field_of(const ColumnValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return quoted(*text);
  if (const auto* count = std::get_if<std::uint64_t>(&value)) return std::to_string(*count);
  const double number = std::get<double>(value);
  return std::isfinite(number) ? shortest_text(number) : "";
}

std::string csv_of(const std::vector<Measurement>& measurements) {
  std::string text;
  const auto add_line = [&text](auto field_of_column) {
    std::string line;
    for (const MeasurementColumn& column : measurement_columns()) {
      line += (line.empty() ? "" : ",") + field_of_column(column);
    }
    text += line + "\n";
  };
  add_line([](const MeasurementColumn& column) { return column.name; });
  for (const Measurement& measurement : measurements) {
    add_line([&](const MeasurementColumn& column) { return field_of(column.value(measurement)); });
  }
  return text;
}

std::string json_of(const std::vector<Measurement>& measurements) {
  Json list = Json::array();
  for (const Measurement& measurement : measurements) {
    Json& object = list.emplace_back(Json::object());
    for (const MeasurementColumn& column : measurement_columns()) {
      // A NaN is written as null.
      object[column.name] =
          std::visit([](const auto& value) { return Json(value); }, column.value(measurement));
    }
  }
  const Json document = {
      {"software", "kv-polarize " KV_VERSION},
      {"units", {{"s0", "counts"}, {"s1", "counts"}, {"s2", "counts"}, {"angle", "degrees"}}},
      {"measurements", std::move(list)}};
  return text_of(document);
}

}  // namespace

std::vector<std::string> measurement_forms() { return {kFormNames.begin(), kFormNames.end()}; }

std::optional<MeasurementForm> measurement_form_named(std::string_view name) {
  const auto found = std::ranges::find(kFormNames, name);
  if (found == kFormNames.end()) return std::nullopt;
  return static_cast<MeasurementForm>(found - kFormNames.begin());
}

std::string text_of(const std::vector<Measurement>& measurements, MeasurementForm form) {
  switch (form) {
    case MeasurementForm::csv:
      return csv_of(measurements);
    case MeasurementForm::json:
      return json_of(measurements);
    default:
      return table_of(measurements);
  }
}

}  // namespace kv::polarization

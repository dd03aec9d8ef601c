// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/measure/measurement_columns.h"

#include "command_line/path_text.h"

namespace kv::polarization {
namespace {

template <std::size_t RegionStatistics::*member>
ColumnValue count_of(const Measurement& measurement) {
  return std::uint64_t{measurement.statistics.*member};
}

template <double RegionStatistics::*member>
ColumnValue number_of(const Measurement& measurement) {
  return measurement.statistics.*member;
}

template <int Rectangle::*member>
ColumnValue side_of(const Measurement& measurement) {
  return static_cast<std::uint64_t>(measurement.region.rectangle.*member);
}

template <double RegionStatistics::*member>
MeasurementColumn value_column(const char* name, const char* heading, Quantity quantity) {
  return {.name = name, .heading = heading, .quantity = quantity, .value = number_of<member>};
}

template <double RegionStatistics::*member>
MeasurementColumn error_column(const char* name, Quantity quantity) {
  return {.name = name,
          .heading = "error",
          .in_table = InTable::if_told,
          .quantity = quantity,
          .is_error = true,
          .value = number_of<member>};
}

template <std::size_t RegionStatistics::*member>
MeasurementColumn count_column(const char* name, const char* heading, InTable in_table) {
  return {.name = name, .heading = heading, .in_table = in_table, .value = count_of<member>};
}

template <int Rectangle::*member>
MeasurementColumn side_column(const char* name) {
  return {.name = name, .heading = {}, .in_table = InTable::never, .value = side_of<member>};
}

std::vector<MeasurementColumn> make_columns() {
  using Statistics = RegionStatistics;
  return {
      {.name = "file",
       .heading = "frame",
       .value = [](const Measurement& of) -> ColumnValue { return text_of(of.file); }},
      {.name = "page",
       .heading = "page",
       .in_table = InTable::if_told,
       .value = [](const Measurement& of) -> ColumnValue {
         return std::uint64_t{of.place.page + 1};
       }},
      {.name = "region",
       .heading = "region",
       .value = [](const Measurement& of) -> ColumnValue { return of.region.name; }},
      side_column<&Rectangle::column>("column"),
      side_column<&Rectangle::row>("row"),
      side_column<&Rectangle::width>("width"),
      side_column<&Rectangle::height>("height"),
      count_column<&Statistics::cells>("cells", "cells", InTable::always),
      count_column<&Statistics::left_out>("left_out", "left out", InTable::always),
      count_column<&Statistics::clipped>("clipped", "clipped", InTable::always),
      count_column<&Statistics::rescued>("rescued", "rescued", InTable::if_told),
      count_column<&Statistics::bad>("bad", "bad", InTable::if_told),
      value_column<&Statistics::s0>("s0", "S0 (counts)", Quantity::stokes),
      error_column<&Statistics::s0_sigma>("s0_error", Quantity::stokes),
      value_column<&Statistics::s1>("s1", "S1 (counts)", Quantity::stokes),
      error_column<&Statistics::s1_sigma>("s1_error", Quantity::stokes),
      value_column<&Statistics::s2>("s2", "S2 (counts)", Quantity::stokes),
      error_column<&Statistics::s2_sigma>("s2_error", Quantity::stokes),
      value_column<&Statistics::dolp>("dolp", "DoLP", Quantity::dolp),
      error_column<&Statistics::dolp_sigma>("dolp_error", Quantity::dolp),
      {.name = "debiased_dolp",
       .heading = "debiased",
       .in_table = InTable::if_told,
       .quantity = Quantity::dolp,
       .value = number_of<&Statistics::debiased_dolp>},
      value_column<&Statistics::angle>("angle", "angle (degrees)", Quantity::angle),
      error_column<&Statistics::angle_sigma>("angle_error", Quantity::angle),
  };
}

}  // namespace

const std::vector<MeasurementColumn>& measurement_columns() {
  static const std::vector<MeasurementColumn> columns = make_columns();
  return columns;
}

}  // namespace kv::polarization

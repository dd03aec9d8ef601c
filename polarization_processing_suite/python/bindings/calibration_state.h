// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <pybind11/pybind11.h>

#include "kv/calibration/calibration.h"

namespace kv::polarization::python {

/// All of a calibration but its maps, as dictionaries, lists and numbers, by the names of the JSON.
pybind11::dict fields_of(const Calibration& calibration);

/// The maps by their names, as arrays (rows, columns) that may not be written to and have the
/// calibration's memory. `owner` keeps it alive.
pybind11::dict maps_of(const Calibration& calibration, const pybind11::object& owner);

/// A calibration of what these two gave. Throws Fault of kind argument, TypeError, KeyError or
/// ValueError for anything else.
Calibration calibration_of(const pybind11::dict& fields, const pybind11::dict& maps);

}  // namespace kv::polarization::python

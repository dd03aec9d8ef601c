// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <pybind11/pybind11.h>

namespace kv::polarization::python {

// Each of these adds a part of the toolkit to the module `kv_polarization._core`.
void bind_build_info(pybind11::module_& module);
void bind_faults(pybind11::module_& module);
void bind_image_files(pybind11::module_& module);
void bind_image_writing(pybind11::module_& module);
void bind_calibration(pybind11::module_& module);
void bind_calibration_fit(pybind11::module_& module);
void bind_identify(pybind11::module_& module);
void bind_pictures(pybind11::module_& module);
void bind_processor(pybind11::module_& module);

}  // namespace kv::polarization::python

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "python/bindings/bindings.h"

using namespace kv::polarization::python;

PYBIND11_MODULE(_core, module) {
  module.doc() = "The toolkit as it is in C++; the package around it is the interface.";
  bind_build_info(module);
  bind_faults(module);
  bind_calibration(module);
  bind_calibration_fit(module);
  bind_identify(module);
  bind_image_files(module);
  bind_image_writing(module);
  bind_pictures(module);
  bind_processor(module);
}

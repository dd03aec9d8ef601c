// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "polarization_processor/routing/vector_backend.h"

#include <string>

namespace kv {

const VectorModuleNames kAvx512Module{
    .library_stem = "kevrinth_qrm_polarization_processor_vector_avx512",
    .initialize = "kv_polarization_processor_vector_avx512_module_initialize",
    .transform = "kv_polarization_processor_transform_vector_avx512",
    .terminate = "kv_polarization_processor_vector_avx512_module_terminate",
};

const VectorModuleNames kAvx2Module{
    .library_stem = "kevrinth_qrm_polarization_processor_vector_avx2",
    .initialize = "kv_polarization_processor_vector_avx2_module_initialize",
    .transform = "kv_polarization_processor_transform_vector_avx2",
    .terminate = "kv_polarization_processor_vector_avx2_module_terminate",
};

VectorBackend::VectorBackend(const VectorModuleNames& names)
    : module_(platform::load_library(
          (std::string(names.library_stem) + platform::kLibrarySuffix).c_str())) {
  if (module_ == nullptr) return;
  initialize_ = platform::find_function<Initialize>(module_, names.initialize);
  if (initialize_ == nullptr) return;
  transform_ = platform::find_function<Transform>(module_, names.transform);
  if (transform_ == nullptr) return;
  terminate_ = platform::find_function<Terminate>(module_, names.terminate);
  if (terminate_ == nullptr) return;
  // A module that throws here stays loaded: the exception is of its code.
  failed_ = initialize_() != 0;
}

VectorBackend::~VectorBackend() {
  // Also after an initialize that reported an error.
  if (terminate_ != nullptr) terminate_();
  if (module_ != nullptr) platform::unload_library(module_);
}

}  // namespace kv

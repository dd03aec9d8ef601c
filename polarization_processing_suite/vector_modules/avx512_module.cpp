// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// The three functions by which the library finds, uses and leaves this module.

#include "platform/cpu_features.h"
#include "vector_modules/module_export.h"
#include "vector_modules/module_transform.h"

KV_VECTOR_MODULE_EXPORT std::int32_t kv_polarization_processor_vector_avx512_module_initialize() {
  return kv::avx512_runnable(kv::read_cpu_registers()) ? 0 : 1;
}

KV_VECTOR_MODULE_EXPORT void kv_polarization_processor_transform_vector_avx512(
    const kv::TransformRequest* request, const kv::PhaseView* view, bool sse41_available,
    const PolarizationProcessor*) {
  kv::module_transform(*request, *view, sse41_available);
}

KV_VECTOR_MODULE_EXPORT void kv_polarization_processor_vector_avx512_module_terminate() {}

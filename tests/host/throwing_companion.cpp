// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Logger and AVX-512 module in one: a library whose functions throw. Its file bears the name of the
// one or the other.
#include <cstdint>
#include <cstdlib>
#include <new>
#include <stdexcept>

extern "C" {

void* qrm_get_log(const char*, const char*, const char*) {
  static char log;
  if (std::getenv("KV_GET_LOG_THROWS") != nullptr) throw std::runtime_error("no log");
  return &log;
}

std::int32_t qrm_log(void*, std::int32_t, const char*, std::int32_t, const char*, const char*) {
  throw std::runtime_error("no line");
}

void qrm_free_log(const char*, const char*) {}

std::int32_t kv_polarization_processor_vector_avx512_module_initialize() { throw std::bad_alloc(); }

void kv_polarization_processor_transform_vector_avx512(const void*, const void*, bool,
                                                       const void*) {}

void kv_polarization_processor_vector_avx512_module_terminate() {}
}

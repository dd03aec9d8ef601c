// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "polarization_processor/kevrinth_qrm_polarization_processor.h"

#include <cstring>
#include <new>

#include "platform/cpu_features.h"
#include "polarization_processor/module_state.h"
#include "polarization_processor/polar_phase_rotation.h"
#include "polarization_processor/processor_instance.h"
#include "polarization_processor/routing/route_transform.h"
#include "polarization_processor/transform_checks.h"
#include "polarization_processor/transform_timer.h"

namespace {

using kv::CoefficientSet;
using kv::module_log_client;

constexpr char kModuleName[] = "KEVRINTH_QRM_POLARIZATION_PROCESSOR";

// Hosts look for these texts in their logs, letter by letter: the two blanks that the prefix makes
// behind "ERROR:", "color" in the line of destroy, and the two spellings in those of create.
constexpr char kErrorPrefix[] = "ERROR: ";
constexpr char kNullHandle[] = "%s The specified polarization processor handle is NULL!";
constexpr char kNullHandleToDestroy[] = "%s The specified color processor handle is NULL!";
constexpr char kNoSse[] = "SSE is required for this component but is not supported on this CPU.";
constexpr char kNoMemory[] =
    "Memory allocation failure when trying to create a polar processor instance!";
constexpr char kUnknownError[] =
    "An unknown error occurred when trying to create a polar_processor instance!";

/// This file as log lines name it, the same from every build, since hosts filter by it: __FILE__
/// may hold a folder of the build machine, and its separators differ from platform to platform.
constexpr char kSourcePath[] =
    R"(polarization_processing_suite\polarization_processor\kevrinth_qrm_polarization_processor.cpp)";

/// Error lines name the file without its folder.
const char* source_file_name() { return std::strrchr(kSourcePath, '\\') + 1; }

template <class... Arguments>
void log_error(int line, const char* function, const char* format, Arguments... arguments) {
  const kv::LogClient* const client = module_log_client;
  if (client == nullptr) return;
  client->log_message(kv::Severity::error, source_file_name(), line, function, format,
                      arguments...);
}

void copy_set(float* to, const CoefficientSet& from) {
  if (to != nullptr) std::memcpy(to, &from, sizeof from);
}

void copy_set(CoefficientSet& to, const float* from) {
  if (from != nullptr) std::memcpy(&to, from, sizeof to);
}

}  // namespace

// An exception out of the log client leaves the mutex locked and the module uninitialised: a later
// initialize or terminate waits for ever.
ProcessorStatus kv_polarization_processor_module_initialize() {
  kv::module_mutex().lock();
  if (kv::module_ref_count == 0 && module_log_client == nullptr) {
    module_log_client = new kv::LogClient(kModuleName);
  }
  ++kv::module_ref_count;
  kv::module_mutex().unlock();
  return kv_status_ok;
}

ProcessorStatus kv_polarization_processor_module_terminate() {
  kv::module_mutex().lock();
  if (kv::module_ref_count != 0 && --kv::module_ref_count == 0) {
    const kv::LogClient* const client = module_log_client;
    module_log_client = nullptr;
    delete client;
  }
  kv::module_mutex().unlock();
  return kv_status_ok;
}

ProcessorStatus kv_polarization_processor_create_polarization_processor(
    PolarizationProcessor** handle) {
  if (module_log_client == nullptr) return kv_status_not_initialized;
  if (!kv::sse_available()) {
    log_error(__LINE__, __func__, kNoSse);
    return kv_status_general_failure;
  }
  const kv::CpuTier tier = kv::cpu_tier_of(kv::read_cpu_registers());
  try {
    *handle = new PolarizationProcessor(tier);
  } catch (const std::bad_alloc&) {
    log_error(__LINE__, __func__, kNoMemory);
    return kv_status_out_of_memory;
  } catch (...) {
    log_error(__LINE__, __func__, kUnknownError);
    return kv_status_general_failure;
  }
  return kv_status_ok;
}

ProcessorStatus kv_polarization_processor_destroy_polarization_processor(
    PolarizationProcessor* handle) {
  if (module_log_client == nullptr) return kv_status_not_initialized;
  if (handle == nullptr) {
    log_error(__LINE__, __func__, kNullHandleToDestroy, kErrorPrefix);
    return kv_status_null_handle;
  }
  delete handle;
  return kv_status_ok;
}

// The planes are written through the request. NOLINTBEGIN(readability-non-const-parameter)
ProcessorStatus kv_polarization_processor_transform(
    PolarizationProcessor* handle, PolarPhase polar_phase, const uint16_t* input, int32_t x_origin,
    int32_t y_origin, int32_t width, int32_t height, uint32_t bit_depth, uint16_t output_max,
    float* normalized_stokes, uint16_t* intensity, uint16_t* stokes_s1, uint16_t* stokes_s2,
    uint16_t* azimuth, uint16_t* dolp) {
  const kv::LogClient* const client = module_log_client;
  if (client == nullptr) return kv_status_not_initialized;

  const kv::TransformTimer timer(*client, kSourcePath, __LINE__, __func__);
  if (handle == nullptr) {
    log_error(__LINE__, __func__, kNullHandle, kErrorPrefix);
    return kv_status_null_handle;
  }
  kv::TransformRequest request{
      .height = height,
      .width = width,
      .polar_phase = polar_phase,
      .input = input,
      .bit_depth = bit_depth,
      .input_max = 0,
      .output_max = static_cast<float>(output_max),
      .output_max_int = output_max,
      .normalized_stokes = normalized_stokes,
      .intensity = intensity,
      .stokes_s1 = stokes_s1,
      .stokes_s2 = stokes_s2,
      .azimuth = azimuth,
      .dolp = dolp,
  };
  if (const auto status = kv::check_request(request); status != kv_status_ok) return status;
  request.polar_phase = kv::rotate_polar_phase(polar_phase, x_origin, y_origin);
  request.input_max = static_cast<float>((1 << bit_depth) - 1);
  kv::route_transform(*handle, handle->backend(), handle->view_of(request.polar_phase), request,
                      kv::sse41_available());
  return kv_status_ok;
}
// NOLINTEND(readability-non-const-parameter)

ProcessorStatus kv_polarization_processor_get_custom_calibration_coefficients(
    PolarizationProcessor* handle, float* coefficients_0, float* coefficients_45,
    float* coefficients_90, float* coefficients_135) {
  if (module_log_client == nullptr) return kv_status_not_initialized;
  if (handle == nullptr) {
    log_error(__LINE__, __func__, kNullHandle, kErrorPrefix);
    return kv_status_null_handle;
  }
  copy_set(coefficients_0, handle->coefficient_store[0]);
  copy_set(coefficients_45, handle->coefficient_store[1]);
  copy_set(coefficients_90, handle->coefficient_store[2]);
  copy_set(coefficients_135, handle->coefficient_store[3]);
  return kv_status_ok;
}

ProcessorStatus kv_polarization_processor_set_custom_calibration_coefficients(
    PolarizationProcessor* handle, const float* coefficients_0, const float* coefficients_45,
    const float* coefficients_90, const float* coefficients_135) {
  if (module_log_client == nullptr) return kv_status_not_initialized;
  if (handle == nullptr) {
    log_error(__LINE__, __func__, kNullHandle, kErrorPrefix);
    return kv_status_null_handle;
  }
  copy_set(handle->coefficient_store[0], coefficients_0);
  copy_set(handle->coefficient_store[1], coefficients_45);
  copy_set(handle->coefficient_store[2], coefficients_90);
  copy_set(handle->coefficient_store[3], coefficients_135);
  return kv_status_ok;
}

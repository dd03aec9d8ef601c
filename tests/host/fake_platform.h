// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

// Stands in the program for the parts of the platform by which the library reaches its optional
// companions and the clock. Nothing in it allocates while the library runs: tests count
// allocations.

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "core/public_call.h"
#include "polarization_processor/processor_instance.h"
#include "polarization_processor/records/transform_request.h"

namespace kv::test {

/// What is wrong with a companion, or with one of its functions.
enum class Fault { missing, fails, throws };

/// By name: of a library "logger", "avx512", "avx2"; of a function "qrm_get_log", "qrm_log",
/// "qrm_free_log", "initialize avx512" and the like. What is not named is there and succeeds.
using Faults = std::map<std::string, Fault, std::less<>>;

/// The exception of Fault::throws.
struct Thrown {};

/// What the platform tells at the start and at the end of a transform; it fails to tell what is
/// negative.
struct Counter {
  std::int64_t frequency = 1000;
  std::int64_t start = 70;
  std::int64_t stop = 75;
};

using Events = std::vector<std::string>;

inline Events operator+(Events first, const Events& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

/// What companions were loaded, asked and unloaded since the last look.
Events take_events();

/// What the platform is from here on.
void set_platform(const Faults& faults = {}, const Counter& counter = {});

/// A platform and the module initialised on it, for the length of a scope.
struct OpenModule {
  explicit OpenModule(const Faults& faults = {}, const Counter& counter = {}) {
    set_platform(faults, counter);
    initialize();
    take_events();
  }
  ~OpenModule() { terminate(); }
  OpenModule(const OpenModule&) = delete;
};

/// The same with a processor whose tier does not come from the machine.
struct ProcessorOfTier : OpenModule {
  explicit ProcessorOfTier(CpuTier tier, const Faults& faults = {})
      : OpenModule(faults), processor(tier) {
    take_events();
  }

  PolarizationProcessor processor;
};

/// The arguments of the last transform of a module.
struct ModuleCall {
  TransformRequest request;
  PhaseView view;
  bool sse41_available;
  const PolarizationProcessor* instance;
};
inline ModuleCall last_module_call;

/// A handle to nothing, which a create that fails leaves as it is.
inline char nowhere;
inline auto* const kNoHandle = reinterpret_cast<PolarizationProcessor*>(&nowhere);

/// The status of a transform of 2x2 pixels with a sum of 1000 at each, and the intensity of the
/// first, 500; 7 if nobody writes it.
using Transformed = std::pair<ProcessorStatus, int>;
Transformed transform_small_frame(PolarizationProcessor* handle);

/// Inline, so that tables of other files may be made of them before main.
inline const Events kLoggerComes{
    "load logger",
    "qrm_get_log 'KEVRINTH_QRM_POLARIZATION_PROCESSOR' '' 'kevrinth_qrm_logger.cfg'"};
inline const Events kLoggerGoes{"qrm_free_log 'KEVRINTH_QRM_POLARIZATION_PROCESSOR' ''",
                                "unload logger"};

/// The line of a transform that takes so long, by default as long as Counter says.
inline Events timing_line(const std::string& microseconds = "5000.000000") {
  return {
      "qrm_log 7 polarization_processing_suite\\polarization_processor\\"
      "kevrinth_qrm_polarization_processor.cpp kv_polarization_processor_transform | transform "
      "takes " +
      microseconds + " microseconds."};
}

inline Events error_line(const std::string& export_name, const std::string& message) {
  return {"qrm_log 2 kevrinth_qrm_polarization_processor.cpp kv_polarization_processor_" +
          export_name + " | " + message};
}

inline const std::string kNullHandle =
    "ERROR:  The specified polarization processor handle is NULL!";
inline const Events kNullHandleToTransform = error_line("transform", kNullHandle) + timing_line();

}  // namespace kv::test

#pragma once

// Stands in the program for the parts of the platform by which the library reaches its optional
// companions and the clock. Nothing in it allocates while the library runs: tests count
// allocations.

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "polarization_processor/processor_instance.h"
#include "polarization_processor/records/transform_request.h"

namespace kv::test {

/// What is wrong with a companion, or with one of its functions.
enum class Fault { missing, fails, throws_bad_alloc, throws };

/// By name: of a library "logger", "avx512", "avx2"; of a function "qrm_get_log", "qrm_log",
/// "qrm_free_log", "initialize avx512" and the like. What is not named is there and succeeds.
using Faults = std::map<std::string, Fault, std::less<>>;

/// The exception of Fault::throws.
struct Thrown {};

/// What the platform tells at the start and at the end of a transform; nothing where it fails.
struct Counter {
  std::optional<std::int64_t> frequency = 1000;
  std::optional<std::int64_t> start = 70;
  std::optional<std::int64_t> stop = 75;
};

/// The arguments of a module's transform.
struct ModuleCall {
  TransformRequest request;
  PhaseView view;
  bool sse41_available;
  const PolarizationProcessor* instance;
};

using Events = std::vector<std::string>;

/// The platform as it is for the length of a scope, at whose end the module has to be closed.
class FakePlatform {
 public:
  explicit FakePlatform(const Faults& faults = {}, const Counter& counter = {});
  ~FakePlatform();
  FakePlatform(const FakePlatform&) = delete;

  /// What companions were loaded, asked and unloaded since the last look.
  Events take_events() const;
  ModuleCall last_module_call() const;
};

/// The same with the module initialised.
class OpenModule : public FakePlatform {
 public:
  explicit OpenModule(const Faults& faults = {}, const Counter& counter = {});
  ~OpenModule();
};

/// The same with a processor whose tier does not come from the machine.
struct ProcessorOfTier : OpenModule {
  explicit ProcessorOfTier(CpuTier tier, const Faults& faults = {});

  PolarizationProcessor processor;
};

/// A handle to nothing, which a create that fails leaves as it is.
inline PolarizationProcessor* no_handle() {
  static char nowhere;
  return reinterpret_cast<PolarizationProcessor*>(&nowhere);
}

Events operator+(Events first, const Events& second);

/// Inline, so that tables of other files may be made of them before main.
inline const Events kLoggerComes{
    "load logger",
    "qrm_get_log 'KEVRINTH_QRM_POLARIZATION_PROCESSOR' '' 'kevrinth_qrm_logger.cfg'"};
inline const Events kLoggerGoes{"qrm_free_log 'KEVRINTH_QRM_POLARIZATION_PROCESSOR' ''",
                                "unload logger"};

/// The lines of a transform that takes so long, by default as long as Counter says, and of an
/// error.
Events timing_line(const std::string& microseconds = "5000.000000");
Events error_line(const std::string& export_name, const std::string& message);

inline const Events kNoMemoryToCreate =
    error_line("create_polarization_processor",
               "Memory allocation failure when trying to create a polar processor instance!");
inline const Events kUnknownErrorToCreate =
    error_line("create_polarization_processor",
               "An unknown error occurred when trying to create a polar_processor instance!");

/// What a transform with a null handle logs.
Events null_handle_to_transform();

}  // namespace kv::test

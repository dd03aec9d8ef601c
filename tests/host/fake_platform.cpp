// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "fake_platform.h"

#include <algorithm>
#include <atomic>
#include <cstdio>

#include "platform/optional_library.h"
#include "platform/performance_counter.h"

namespace kv::test {
namespace {

std::array<std::array<char, 256>, 1000> events;
std::atomic<std::size_t> event_count = 0;
Faults faults;
Counter counter;
std::atomic<unsigned> counter_reads = 0;

/// Records an event, in printf syntax, and gives it back.
template <class... Arguments>
const char* record(const char* format, Arguments... arguments) {
  auto& event = events.at(event_count++);
  std::snprintf(event.data(), event.size(), format, arguments...);
  return event.data();
}

/// Whether the function is to report success. Throws when it is to throw.
bool succeeds(std::string_view function) {
  const auto fault = faults.find(function);
  if (fault == faults.end()) return true;
  if (fault->second == Fault::throws) throw Thrown();
  return false;
}

char the_log;

void* get_log(const char* module_name, const char* group_name, const char* config_file_name) {
  record("qrm_get_log '%s' '%s' '%s'", module_name, group_name, config_file_name);
  return succeeds("qrm_get_log") ? &the_log : nullptr;
}

std::int32_t log(void* to, std::int32_t severity, const char* file, std::int32_t line,
                 const char* function, const char* message) {
  record("qrm_log %d %s %s | %s%s", static_cast<int>(severity), file, function, message,
         to == &the_log && line > 0 ? "" : ", to a wrong log or without a line number");
  return succeeds("qrm_log") ? 0 : 5;
}

void free_log(const char* module_name, const char* group_name) {
  record("qrm_free_log '%s' '%s'", module_name, group_name);
  succeeds("qrm_free_log");
}

constexpr char kAvx512[] = "avx512";
constexpr char kAvx2[] = "avx2";

template <const char* instruction_set>
std::int32_t initialize_module() {
  return succeeds(record("initialize %s", instruction_set)) ? 0 : 1;
}

/// Writes nothing into the planes.
template <const char* instruction_set>
void transform_by_module(const TransformRequest* request, const PhaseView* view,
                         bool sse41_available, const PolarizationProcessor* instance) {
  record("transform %s", instruction_set);
  last_module_call = {*request, *view, sse41_available, instance};
}

template <const char* instruction_set>
void terminate_module() {
  succeeds(record("terminate %s", instruction_set));
}

/// A library by its file, or a function by its export.
struct Companion {
  std::string_view exported_name;
  const char* name;
  void* function = nullptr;
};

Companion companions[]{
    {"kevrinth_qrm_logger.fake", "logger"},
    {"qrm_get_log", "qrm_get_log", reinterpret_cast<void*>(&get_log)},
    {"qrm_log", "qrm_log", reinterpret_cast<void*>(&log)},
    {"qrm_free_log", "qrm_free_log", reinterpret_cast<void*>(&free_log)},
    {"kevrinth_qrm_polarization_processor_vector_avx512.fake", "avx512"},
    {"kv_polarization_processor_vector_avx512_module_initialize", "initialize avx512",
     reinterpret_cast<void*>(&initialize_module<kAvx512>)},
    {"kv_polarization_processor_transform_vector_avx512", "transform avx512",
     reinterpret_cast<void*>(&transform_by_module<kAvx512>)},
    {"kv_polarization_processor_vector_avx512_module_terminate", "terminate avx512",
     reinterpret_cast<void*>(&terminate_module<kAvx512>)},
    {"kevrinth_qrm_polarization_processor_vector_avx2.fake", "avx2"},
    {"kv_polarization_processor_vector_avx2_module_initialize", "initialize avx2",
     reinterpret_cast<void*>(&initialize_module<kAvx2>)},
    {"kv_polarization_processor_transform_vector_avx2", "transform avx2",
     reinterpret_cast<void*>(&transform_by_module<kAvx2>)},
    {"kv_polarization_processor_vector_avx2_module_terminate", "terminate avx2",
     reinterpret_cast<void*>(&terminate_module<kAvx2>)},
};

/// Null where it is unknown or missing.
Companion* find(const char* exported_name) {
  Companion* const found = std::ranges::find(companions, exported_name, &Companion::exported_name);
  if (found == std::end(companions)) return nullptr;
  const auto fault = faults.find(found->name);
  return fault != faults.end() && fault->second == Fault::missing ? nullptr : found;
}

}  // namespace

void set_platform(const Faults& of_companions, const Counter& of_platform) {
  event_count = 0;
  counter_reads = 0;
  faults = of_companions;
  counter = of_platform;
}

Events take_events() {
  Events taken;
  for (std::size_t i = 0; i < event_count; ++i) taken.emplace_back(events[i].data());
  event_count = 0;
  return taken;
}

Transformed transform_small_frame(PolarizationProcessor* handle) {
  const std::array<std::uint16_t, 4> frame{100, 200, 300, 400};
  std::array<std::uint16_t, 4> intensity{7, 7, 7, 7};
  const auto status = transform(handle, {.input = frame.data(), .intensity = intensity.data()});
  return {status, intensity[0]};
}

}  // namespace kv::test

namespace kv::platform {

const char* const kLibrarySuffix = ".fake";

LibraryHandle load_library(const char* file_name) {
  test::Companion* const library = test::find(file_name);
  if (library != nullptr) test::record("load %s", library->name);
  return library;
}

void* find_export(LibraryHandle, const char* name) {
  const test::Companion* const function = test::find(name);
  return function != nullptr ? function->function : nullptr;
}

void unload_library(LibraryHandle library) {
  test::record("unload %s", static_cast<test::Companion*>(library)->name);
}

bool read_counter_frequency(std::int64_t& frequency) {
  frequency = test::counter.frequency;
  return true;
}

bool read_counter(std::int64_t& count) {
  count = test::counter_reads++ % 2 == 0 ? test::counter.start : test::counter.stop;
  return count >= 0;
}

}  // namespace kv::platform

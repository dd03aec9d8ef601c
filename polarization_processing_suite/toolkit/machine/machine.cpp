// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/machine/machine.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <system_error>
#include <thread>

#include "kv/polarization/processor.h"
#include "platform/optional_library.h"
#include "platform/own_folder.h"
#include "platform/processor_name.h"

namespace kv::polarization {
namespace {

constexpr std::string_view kModuleStem = "kevrinth_qrm_polarization_processor_vector_";
constexpr const char* kLoggerStem = "kevrinth_qrm_logger";

/// Where the logger reads how and what to log, as docs/logging.md tells it.
std::filesystem::path configuration_beside(const std::filesystem::path& logger) {
  // Nothing changes the environment here. NOLINTNEXTLINE(concurrency-mt-unsafe)
  const char* const named = std::getenv("KEVRINTH_QRM_LOGGER_CONFIG");
  if (named != nullptr && *named != '\0') return named;
  const std::filesystem::path file = logger.parent_path() / (std::string(kLoggerStem) + ".cfg");
  std::error_code ignored;
  return logger.is_absolute() && std::filesystem::exists(file, ignored) ? file
                                                                        : std::filesystem::path();
}

bool can_run(CpuTier tier, const CpuRegisters& registers) {
  return tier == CpuTier::avx512 ? avx512_runnable(registers)
                                 : tier == CpuTier::avx2 && avx2_runnable(registers);
}

Kernels kernels_of_module(CpuTier tier) {
  return tier == CpuTier::avx512 ? Kernels::avx512 : Kernels::avx2;
}

}  // namespace

const KernelTraits& traits_of(Kernels kernels) {
  static constexpr std::array<KernelTraits, 4> all{{{"sse2", "SSE2, in the library"},
                                                    {"sse41", "SSE4.1, in the library"},
                                                    {"avx2", "AVX2 module"},
                                                    {"avx512", "AVX-512 module"}}};
  return all[static_cast<std::size_t>(kernels)];
}

std::string_view name_of(CpuTier tier) {
  static constexpr std::array<std::string_view, 3> names{"baseline", "avx2", "avx512"};
  return names[static_cast<std::size_t>(tier)];
}

std::string module_file_name(CpuTier tier) {
  if (tier == CpuTier::baseline) return "";
  return std::string(kModuleStem).append(name_of(tier)) + platform::kLibrarySuffix;
}

std::filesystem::path core_library() {
  const auto function = &kv_polarization_processor_module_initialize;
  return platform::file_of(reinterpret_cast<const void*>(function));
}

Machine look_at_machine() {
  const Processor processor;  // keeps companions loaded for as long as they are looked at
  const CpuRegisters registers = read_cpu_registers();
  Machine machine;
  machine.processor = platform::processor_name();
  machine.cores = std::max(1u, std::thread::hardware_concurrency());
  machine.tier = cpu_tier_of(registers);
  machine.library = core_library();
  machine.module_can_run = can_run(machine.tier, registers);
  if (machine.tier != CpuTier::baseline) {
    machine.module = platform::file_of_loaded(module_file_name(machine.tier).c_str());
  }
  machine.own_kernels = sse41_available() ? Kernels::sse41 : Kernels::sse2;
  const bool module_works = !machine.module.empty() && machine.module_can_run;
  machine.kernels = module_works ? kernels_of_module(machine.tier) : machine.own_kernels;
  machine.logger =
      platform::file_of_loaded((std::string(kLoggerStem) + platform::kLibrarySuffix).c_str());
  if (!machine.logger.empty()) {
    machine.logger_configuration = configuration_beside(machine.logger);
  }
  return machine;
}

}  // namespace kv::polarization

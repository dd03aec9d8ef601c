// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "platform/cpu_features.h"

namespace kv::polarization {

/// The code that computes planes.
enum class Kernels { sse2, sse41, avx2, avx512 };

struct KernelTraits {
  std::string_view name;   ///< for machines
  std::string_view title;  ///< for people
};

const KernelTraits& traits_of(Kernels kernels);

/// The processor, and what the library finds on it.
struct Machine {
  std::string processor;  ///< its name; empty when it does not tell
  unsigned cores = 1;
  CpuTier tier = CpuTier::baseline;
  std::filesystem::path library;
  std::filesystem::path module;  ///< the vector module of the tier; empty when it is not found
  bool module_can_run = false;   ///< the processor has its instructions and the system allows them
  Kernels own_kernels{};         ///< within the library
  Kernels kernels{};             ///< those that frames get
  std::filesystem::path logger;  ///< empty when it is not found
  std::filesystem::path logger_configuration;  ///< empty for the logger's defaults
};

/// Opens the library to see what it loads. Throws Fault where Processor does.
Machine look_at_machine();

/// The file of the processing library that the process has loaded; empty when it cannot be told.
std::filesystem::path core_library();

std::string_view name_of(CpuTier tier);

/// The file name of a tier's vector module; empty for the tier that has none.
std::string module_file_name(CpuTier tier);

}  // namespace kv::polarization

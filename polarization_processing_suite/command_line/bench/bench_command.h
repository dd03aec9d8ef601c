// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "kv/polarization/planes.h"

namespace kv::polarization {

struct BenchOptions {
  int width = 2448;
  int height = 2048;
  int bit_depth = 12;
  std::optional<std::filesystem::path> file{};  ///< a frame in place of a simulated one
  std::vector<OutputSet> planes;
  std::vector<int> threads;
  double seconds = 0.3;  ///< of a measurement, at the least
  bool json = false;
};

/// The planes of a set by their names, with + between them.
std::string name_of(OutputSet planes);

/// Measures the library on this machine and prints its rates. Returns an exit status.
int run_bench(const BenchOptions& options);

}  // namespace kv::polarization

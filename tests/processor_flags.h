// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <fstream>
#include <iterator>
#include <optional>
#include <set>
#include <sstream>
#include <string>

namespace kv::test {

/// The instruction sets that the operating system says this machine can run, by the names of
/// /proc/cpuinfo; none where there is no such file. In an emulator they are those of the host.
inline std::optional<std::set<std::string>> processor_flags() {
  std::ifstream cpuinfo("/proc/cpuinfo");
  for (std::string line; std::getline(cpuinfo, line);) {
    if (!line.starts_with("flags")) continue;
    std::istringstream words(line);
    return std::set<std::string>{std::istream_iterator<std::string>(words), {}};
  }
  return std::nullopt;
}

}  // namespace kv::test

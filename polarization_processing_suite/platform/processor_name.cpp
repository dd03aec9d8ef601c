// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/processor_name.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#if defined(_MSC_VER)
#include <intrin.h>
#else
#include <cpuid.h>
#endif

namespace kv::platform {
namespace {

using Registers = std::array<std::uint32_t, 4>;

/// EAX to EDX of that leaf.
Registers cpuid(std::uint32_t leaf) {
  Registers registers{};
#if defined(_MSC_VER)
  int values[4];
  __cpuidex(values, static_cast<int>(leaf), 0);
  std::memcpy(registers.data(), values, sizeof values);
#else
  __cpuid_count(leaf, 0, registers[0], registers[1], registers[2], registers[3]);
#endif
  return registers;
}

// The extended leaves: the first tells the last one, and three hold the name, 16 characters each.
constexpr std::uint32_t kFirstExtendedLeaf = 0x80000000;
constexpr std::uint32_t kFirstNameLeaf = 0x80000002;
constexpr std::uint32_t kLastNameLeaf = 0x80000004;

}  // namespace

std::string processor_name() {
  if (cpuid(kFirstExtendedLeaf)[0] < kLastNameLeaf) return "";
  std::string name;
  for (std::uint32_t leaf = kFirstNameLeaf; leaf <= kLastNameLeaf; ++leaf) {
    const Registers registers = cpuid(leaf);
    name.append(reinterpret_cast<const char*>(registers.data()), sizeof registers);
  }
  name.resize(std::min(name.find('\0'), name.size()));
  const std::size_t first = name.find_first_not_of(' ');
  if (first == std::string::npos) return "";
  return name.substr(first, name.find_last_not_of(' ') - first + 1);
}

}  // namespace kv::platform

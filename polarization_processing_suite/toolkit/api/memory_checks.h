// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kv::polarization {

/// Throws Fault of kind argument.
[[noreturn]] void refuse(const std::string& line);

struct NamedMemory {
  std::string_view name;
  std::span<const std::byte> bytes;
};

/// Refuses memory that is shared, even partly.
void check_overlap(const std::vector<NamedMemory>& all);

/// Refuses a plane of `size` elements where a frame fills `needed` ones.
void check_room(std::string_view plane, std::size_t size, std::size_t needed);

}  // namespace kv::polarization

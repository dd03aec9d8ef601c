// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

#include "kv/polarization/buffer.h"

namespace kv::polarization {

/// What a file's content is known by: 128 bits of XXH3 in hexadecimal, which find every accidental
/// change at the speed of memory, and no deliberate one.
struct ContentIdentity {
  std::uint64_t size = 0;
  std::string hash;

  bool operator==(const ContentIdentity&) const = default;
};

ContentIdentity identity_of(std::span<const std::uint8_t> content);
std::string hash_of(const std::string& text);

/// Reads a file to its end for it. Throws Fault of kind file.
ContentIdentity identity_of(const std::filesystem::path& file);

/// The whole content of a file, in memory that is used again. Throws Fault of kind file.
void read_file(const std::filesystem::path& file, Buffer<std::uint8_t>& content);

}  // namespace kv::polarization

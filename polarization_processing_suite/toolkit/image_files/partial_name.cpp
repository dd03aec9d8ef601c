// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/partial_name.h"

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>

namespace kv::polarization {
namespace {

constexpr std::string_view kEnding = ".partial";

/// Of the number that tells names apart.
constexpr std::size_t kDigits = 10;

/// Bytes of a name that most file systems take, or units of UTF-16 on Windows.
constexpr std::size_t kLongestName = 255;

/// The whole name where the target's leaves no room for more.
constexpr std::string_view kShortStart = ".kv";

std::string random_number() {
  constexpr std::uint32_t least = 1'000'000'000;  // ten digits
  std::random_device entropy;
  return std::to_string(least + entropy() % (3 * least));
}

}  // namespace

std::filesystem::path partial_beside(const std::filesystem::path& target) {
  const std::string added = "." + random_number() + std::string(kEnding);
  std::filesystem::path name = target.filename();
  if (name.native().size() + added.size() > kLongestName) name = kShortStart;
  name += added;
  return target.parent_path() / name;
}

bool is_partial(const std::filesystem::path& name) {
  if (name.extension() != kEnding) return false;
  const std::filesystem::path number = name.stem().extension();
  const auto& digits = number.native();  // behind a dot
  return digits.size() == 1 + kDigits &&
         std::all_of(digits.begin() + 1, digits.end(), [](auto c) { return c >= '0' && c <= '9'; });
}

}  // namespace kv::polarization

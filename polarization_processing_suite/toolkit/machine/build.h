// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kv::polarization {

using NamedTexts = std::vector<std::pair<std::string, std::string>>;

/// How this build was made.
struct Build {
  std::string_view version;                        ///< of the project
  std::string_view compiler;                       ///< "GNU 12.2.0"
  std::string_view flags;                          ///< "Release -O2"
  std::vector<std::string_view> instruction_sets;  ///< of its kernels, modules included
  NamedTexts options;                              ///< of the configuration: name, "ON" or "OFF"
  NamedTexts libraries;  ///< taken in, linked or as headers: name, version; empty when unknown
};

const Build& this_build();

}  // namespace kv::polarization

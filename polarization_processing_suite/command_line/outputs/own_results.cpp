// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/outputs/own_results.h"

#include <fstream>
#include <string>
#include <string_view>

#include "kv/image_files/provenance.h"

namespace kv::polarization {
namespace {

/// How json_of(ProvenanceRecord) begins.
constexpr std::string_view kOwnProvenance = R"({"software":"kv-polarize )";

}  // namespace

bool is_own_result(const std::filesystem::path& file) {
  const auto provenance = provenance_of(file);
  return provenance && provenance->starts_with(kOwnProvenance);
}

bool is_own_sidecar(const std::filesystem::path& file) {
  std::string start(kOwnProvenance.size(), '\0');
  std::ifstream(file, std::ios::binary)
      .read(start.data(), static_cast<std::streamsize>(start.size()));
  return start == kOwnProvenance;
}

}  // namespace kv::polarization

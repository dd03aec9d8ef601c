// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/image_files/provenance.h"

#include <system_error>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/format_table.h"
#include "toolkit/image_files/stored_samples.h"

namespace kv::polarization {
namespace {

SourcePointer open_source(const std::filesystem::path& path) {
  // The content of a pipe would be gone when it was looked at.
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(path, ignored)) return nullptr;
  return source_of(open_stream(path));
}

std::optional<std::string> whole_text(ByteSource& source) {
  if (source.size() > kMostText) return std::nullopt;
  std::string text(static_cast<std::size_t>(source.size()), '\0');
  read_exactly(source, 0, text.data(), text.size());
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
  return text;
}

std::optional<std::string> find_provenance(const std::filesystem::path& path) {
  const SourcePointer file = open_source(path);
  if (file == nullptr) return std::nullopt;
  const auto format = format_of_image_start(first_bytes(*file));
  if (format && functions_of(*format).provenance != nullptr) {
    return functions_of(*format).provenance(*file);
  }
  const SourcePointer beside = open_source(provenance_beside(path));
  return beside == nullptr ? std::nullopt : whole_text(*beside);
}

}  // namespace

std::filesystem::path provenance_beside(const std::filesystem::path& path) {
  std::filesystem::path beside = path;
  beside += ".json";
  return beside;
}

std::optional<std::string> provenance_of(const std::filesystem::path& path) {
  try {
    return find_provenance(path);
  } catch (const Fault& fault) {
    if (fault.kind() == FaultKind::memory) throw;
    return std::nullopt;
  }
}

}  // namespace kv::polarization

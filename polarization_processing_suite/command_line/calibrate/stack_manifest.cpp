// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/calibrate/stack_manifest.h"

#include <charconv>
#include <cmath>
#include <optional>

#include "command_line/csv_reader.h"

namespace kv::polarization {
namespace {

std::optional<FrameKind> kind_named(const std::string& name) {
  if (name == "polarized") return FrameKind::polarized;
  if (name == "dark") return FrameKind::dark;
  if (name == "flat") return FrameKind::flat;
  return std::nullopt;
}

double angle_of(const CsvReader& manifest) {
  const std::string text = manifest.field("angle");
  double angle = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), angle);
  if (error != std::errc{} || end != text.data() + text.size() || !std::isfinite(angle)) {
    manifest.refuse("the angle is '" + text +
                    "'; a polarized frame needs one in degrees, such as 35 or 2.5");
  }
  return angle;
}

ManifestEntry entry_of(const CsvReader& manifest, const std::filesystem::path& folder) {
  ManifestEntry entry;
  entry.name = manifest.field("file");
  if (entry.name.empty()) manifest.refuse("there is no file; name one");
  entry.file = folder / entry.name;
  const std::string kind = manifest.field("kind");
  const auto known = kind_named(kind);
  if (!known) manifest.refuse("the kind is '" + kind + "'; it must be polarized, dark or flat");
  entry.kind = *known;
  if (entry.kind == FrameKind::polarized) entry.angle = angle_of(manifest);
  return entry;
}

}  // namespace

std::vector<ManifestEntry> read_manifest(const std::filesystem::path& file) {
  CsvReader manifest(
      file, {.title = "the manifest", .columns = "file,kind,angle", .needed = {"file", "kind"}});
  std::vector<ManifestEntry> entries;
  while (manifest.next()) entries.push_back(entry_of(manifest, file.parent_path()));
  if (entries.empty()) manifest.refuse("names no frames; write a line for each file");
  return entries;
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/transform/result_names.h"

#include "command_line/batch/provenance_record.h"

namespace kv::polarization {
ResultNames::ResultNames(const OutputOptions& options, bool in_folders)
    : folder_(options.folder),
      stacking_(options.stacking.value_or(Stacking::planes)),
      in_folders_(in_folders) {
  if (!options.names.empty()) chosen_.emplace(options.names);
}

bool ResultNames::is_stacked(const Result& result, std::optional<std::size_t> pages) const {
  if (stacking_ == Stacking::none || !pages || !traits_of(result.format).stacks) return false;
  return result.kind != ImageKind::picture && (*pages > 1 || stacking_ == Stacking::inputs);
}

std::string ResultNames::plane_of(const Result& result, std::optional<std::size_t> pages) const {
  // The mean has the samples' own depth, and images of a file have one.
  const bool shared = stacking_ == Stacking::inputs && result.kind == ImageKind::grey &&
                      std::holds_alternative<Plane>(result.what);
  return shared && is_stacked(result, pages) ? "planes" : result.name;
}

std::filesystem::path ResultNames::name_of(const Input& input, const FramePlace& place,
                                           const Result& result) const {
  NameParts parts;
  parts.name = input.is_standard_input() ? "stdin" : json_text(input.path.stem());
  parts.folder = json_text(input.folder);
  parts.plane = plane_of(result, place.pages);
  parts.page = place.page + 1;
  parts.pages = place.pages.value_or(1);
  parts.index = place.input + 1;
  std::filesystem::path name =
      template_for(is_stacked(result, place.pages), place.pages).path_of(parts);
  name += result.ending();
  return name;
}

std::filesystem::path ResultNames::path_of(const Input& input, const FramePlace& place,
                                           const Result& result) const {
  return folder_ / name_of(input, place, result);
}

NameTemplate ResultNames::template_for(bool stacked, std::optional<std::size_t> pages) const {
  if (chosen_) return *chosen_;
  std::string text = in_folders_ ? "{folder}/{name}" : "{name}";
  if (!stacked && pages != 1u) {
    text += pages ? "_{page}" : "_{page:06}";  // six digits where nobody knows how many frames come
  }
  text += "_{plane}";
  return NameTemplate(text);
}

}  // namespace kv::polarization

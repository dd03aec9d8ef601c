// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "command_line/inputs/input_list.h"
#include "command_line/outputs/name_template.h"
#include "command_line/transform/results.h"
#include "command_line/transform/transform_options.h"

namespace kv::polarization {

/// A frame's place in the run.
struct FramePlace {
  std::size_t input = 0;             ///< number of the input
  std::size_t page = 0;              ///< from 0 up
  std::optional<std::size_t> pages;  ///< of the input; none for a pipe
};

/// Where the results of every frame go.
class ResultNames {
 public:
  ResultNames(const OutputOptions& options, bool in_folders);

  /// Whether that result of all pages of an input shares a file.
  bool is_stacked(const Result& result, std::optional<std::size_t> pages) const;

  /// What stands for {plane}: the result's name, or that of a file with all grey planes.
  std::string plane_of(const Result& result, std::optional<std::size_t> pages) const;

  const std::filesystem::path& folder() const { return folder_; }

  /// Relative to the folder of results.
  std::filesystem::path name_of(const Input& input, const FramePlace& place,
                                const Result& result) const;
  std::filesystem::path path_of(const Input& input, const FramePlace& place,
                                const Result& result) const;

 private:
  NameTemplate template_for(bool stacked, std::optional<std::size_t> pages) const;

  std::filesystem::path folder_;
  Stacking stacking_;
  bool in_folders_;
  std::optional<NameTemplate> chosen_;
};

}  // namespace kv::polarization

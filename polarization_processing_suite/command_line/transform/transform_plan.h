// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "command_line/batch/frame_source.h"
#include "command_line/batch/journal.h"
#include "command_line/transform/result_names.h"

namespace kv::polarization {

struct PlannedInput {
  Input input;
  std::optional<std::size_t> pages = 1;   ///< in the file; none for a pipe that does not tell
  std::vector<std::size_t> wanted{};      ///< from 0 up; empty for a pipe
  std::shared_ptr<FrameSource> source{};  ///< of what can be opened only once
};

/// All that is settled before the first frame is read: which frames become which files, and that no
/// file is lost by that.
class TransformPlan {
 public:
  /// Lists the inputs, and opens each of them for its number of pages. Throws UsageError, Fault.
  TransformPlan(const TransformOptions& options, const Journal& journal);

  const std::vector<PlannedInput>& inputs() const { return inputs_; }
  const std::vector<Result>& results() const { return results_; }
  const ResultNames& names() const { return names_; }

  /// Results of earlier runs that folders or patterns of inputs found, and left out.
  std::size_t own_results() const { return own_results_; }

  /// Frames; none when a pipe alone knows.
  std::optional<std::size_t> frames() const;

  /// The results of an input, by their names relative to the folder of results; none of a pipe.
  std::vector<std::filesystem::path> results_of_input(std::size_t input) const;

  /// The folders that results go to.
  std::vector<std::filesystem::path> folders() const;

  /// Throws Fault when a result would replace another one, an input, or a file that is there and
  /// may not be replaced.
  void check_results(const OutputOptions& options, const Journal& journal) const;

 private:
  TransformPlan(const TransformOptions& options, InputList list);
  static void find_pages(PlannedInput& planned, const TransformOptions& options);
  template <class Visit>
  void for_each_name_of(std::size_t input, Visit visit) const;
  template <class Visit>
  void for_each_name(Visit visit) const;
  void check_collisions() const;

  std::vector<PlannedInput> inputs_;
  std::vector<Result> results_;
  std::size_t own_results_ = 0;
  ResultNames names_;
};

}  // namespace kv::polarization

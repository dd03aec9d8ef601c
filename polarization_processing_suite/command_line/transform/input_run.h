// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "command_line/batch/frame_report.h"
#include "command_line/batch/frame_source.h"
#include "command_line/outputs/stack_output.h"
#include "command_line/transform/transform_context.h"

namespace kv::polarization {

/// An input on its way: its frames, the stacks that they share, and whether all of them were done.
class InputRun {
 public:
  InputRun(const TransformContext& context, std::size_t number,
           std::shared_ptr<FrameSource> source);

  const PlannedInput& planned() const { return planned_; }
  FrameSource& source() { return *source_; }

  /// The stack of that result, which is made when its first image comes; null when a frame of the
  /// input has failed.
  StackOutput* stack_of(const Result& result, int bit_depth, const ImageShape& shape);

  /// Place of a frame's image in its stack.
  std::size_t place_in_stack(const Result& result, std::size_t frame) const;

  /// To be called once for each frame that is done, with the files of its own. Returns true when it
  /// was the last one of an input of which no frame failed.
  bool frame_done(const std::vector<JournalFile>& files);

  /// To be called for a frame that failed. True for the first one, when its results share files
  /// with those of other frames, which are given up by that.
  bool frame_failed();

  /// To be called once for each frame, when nothing is left to do for it. True for the last one.
  bool frame_over();

  /// Completes the stacks of an input that is done. Returns their files.
  std::vector<JournalFile> publish_stacks(Publishing publishing);

  JournalEntry journal_entry() const;

 private:
  std::vector<Result> sharing(const Result& result) const;

  const TransformContext& context_;
  const PlannedInput& planned_;
  std::size_t number_;
  std::shared_ptr<FrameSource> source_;
  std::mutex mutex_;
  struct Stack {
    std::unique_ptr<StackOutput> output;
    std::string sidecar;  ///< empty where the file itself has a place for texts
  };
  std::map<std::string, Stack> stacks_;  ///< by what stands for {plane}
  std::size_t done_ = 0;
  std::size_t over_ = 0;
  bool failed_ = false;
  std::vector<JournalFile> files_;
};

}  // namespace kv::polarization

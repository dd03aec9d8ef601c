// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "command_line/batch/frame_queue.h"
#include "command_line/batch/run_reports.h"
#include "command_line/transform/frame_work.h"

namespace kv::polarization {

/// All inputs, by workers that each take a frame through all of its steps.
class TransformRun {
 public:
  /// Without a journal nothing is noted, and nothing counts as done. All of them must outlive the
  /// run.
  TransformRun(const TransformContext& context, Journal* journal, RunReports& reports);

  /// Returns when all frames are done, or the run was interrupted, or the disk is full.
  void run(std::size_t workers);

  bool disk_is_full() const { return disk_is_full_; }

 private:
  void work();
  std::shared_ptr<FrameSource> open(std::size_t number);

  /// What the input's results replace is no longer the results of other inputs.
  void release_results(std::size_t number);

  bool is_done(const PlannedInput& planned, const FrameSource& source) const;
  void transform(const FrameTask& task, FrameWork& work);
  bool read(const FrameTask& task, InputRun& input, FrameWork& work, FramePlace& place,
            FrameReport& report);
  void write(InputRun& input, const FramePlace& place, FrameWork& work, FrameReport& report);
  void write_to_reader(InputRun& input, const FramePlace& place, FrameWork& work);
  void after_failure(InputRun& input, const FrameWork& work, FrameReport& report);

  const TransformContext& context_;
  const TransformOptions& options_;
  Journal* journal_;
  RunReports& reports_;
  FileMemory memory_;
  std::vector<std::shared_ptr<InputRun>> inputs_;
  FrameQueue queue_;
  std::atomic<bool> disk_is_full_ = false;
  bool reader_is_gone_ = false;  // of standard output, to which only one worker writes
};

}  // namespace kv::polarization

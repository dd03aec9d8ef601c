// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "command_line/batch/event_stream.h"
#include "command_line/batch/frame_order.h"
#include "command_line/batch/report_options.h"
#include "command_line/batch/run_totals.h"
#include "command_line/progress_line.h"
#include "command_line/stopwatch.h"
#include "kv/image_files/pending_file.h"

namespace kv::polarization {

/// Tells people and programs what becomes of the frames, in the order of the inputs. Any thread may
/// report.
class RunReports {
 public:
  /// Opens what is written to, so that a bad place is told before any work is done.
  RunReports(const ReportOptions& options, std::string destination, bool dry_run);

  void start(std::size_t inputs, std::optional<std::size_t> frames);
  void add(FrameReport report);

  /// Lines that belong to no frame; failures are told even when the run is to be quiet.
  void warn(const std::string& line);
  void fail(const std::string& line);

  const RunTotals& totals() const { return totals_; }

  /// Tells what is left, and the sums. Returns the exit status, which is no success when they
  /// cannot be written.
  int finish(int status);

 private:
  void tell(const FrameReport& report);
  void show(const std::string& line);
  void show_results(const FrameReport& report);
  bool write_list();
  void write_summary(int status);

  const ReportOptions& options_;
  std::string destination_;
  bool dry_run_;
  std::mutex mutex_;
  ProgressLine progress_;
  EventStream events_;
  std::unique_ptr<PendingFile> list_;
  std::string listed_;
  std::optional<std::size_t> last_listed_;
  Stopwatch stopwatch_;
  std::optional<std::size_t> expected_;
  FrameOrder order_;
  RunTotals totals_;
};

}  // namespace kv::polarization

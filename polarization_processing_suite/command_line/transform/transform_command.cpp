// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/transform/transform_command.h"

#include <algorithm>
#include <thread>

#include "command_line/exit_status.h"
#include "command_line/options/values.h"
#include "command_line/transform/results_folder.h"
#include "command_line/transform/transform_run.h"
#include "kv/polarization/fault.h"
#include "platform/optional_library.h"
#include "platform/process.h"

namespace kv::polarization {
namespace {

constexpr const char* kLoggerLibrary = "kevrinth_qrm_logger";

void prepare_log(const TransformOptions& options) {
  if (!options.log_level) return;
  platform::set_environment("KEVRINTH_QRM_LOGGER_LEVEL",
                            std::to_string(*options.log_level).c_str());
  const Processor processor;  // the library looks for its logger when the first one is made
  if (!platform::is_loaded((std::string(kLoggerLibrary) + platform::kLibrarySuffix).c_str())) {
    throw Fault(FaultKind::argument,
                "--log needs the library " + std::string(kLoggerLibrary) +
                    ", which was not found; put it beside kevrinth_qrm_polarization_processor");
  }
}

int status_of(const RunTotals& totals, bool complete) {
  if (platform::interrupted()) return exit_interrupted;
  if (totals.failed == 0 && complete) return exit_success;
  return totals.frames + totals.skipped == 0 ? exit_nothing_done : exit_some_failed;
}

/// Frames at the same time. Standard output takes one after the other.
std::size_t workers_of(const TransformOptions& options, const TransformPlan& plan,
                       std::size_t cores) {
  if (options.output.to_standard_output()) return 1;
  const std::size_t jobs = options.jobs > 0 ? static_cast<std::size_t>(options.jobs) : cores;
  return std::clamp<std::size_t>(plan.frames().value_or(jobs), 1, jobs);
}

/// Standard output is a single file.
void check_standard_output(const TransformPlan& plan) {
  if (plan.results().size() != 1) {
    throw UsageError(
        "-o - takes one result of each frame; name it by --planes and --no-pictures, "
        "or by --no-planes and --pictures");
  }
  const ImageFormat format = plan.results().front().format;
  const bool joins =
      format == ImageFormat::raw || format == ImageFormat::npy || format == ImageFormat::pgm;
  if (!joins && plan.frames() != 1u) {
    throw UsageError(
        "several frames go to standard output only in the formats raw, npy and pgm, "
        "one behind the other");
  }
  if (platform::output_stream_is_terminal()) {
    throw UsageError("-o - would write an image to the terminal; lead it into a file or a program");
  }
}

/// The results are complete without it.
void tidy(ResultsFolder& folder, RunReports& reports) {
  try {
    folder.tidy();
  } catch (const Fault& fault) {
    reports.warn(std::string("the journal stays as it is: ") + fault.what());
  }
}

}  // namespace

int run_transform(const TransformOptions& options) {
  prepare_log(options);
  const bool to_folder = !options.output.dry_run && !options.output.to_standard_output();
  Journal journal(options.output.folder);
  const TransformPlan plan(options, journal);
  if (options.output.to_standard_output()) {
    check_standard_output(plan);
  } else {
    plan.check_results(options.output, journal);
  }
  TransformContext context = make_context(options, plan);
  const std::size_t cores = std::max(1u, std::thread::hardware_concurrency());
  const std::size_t workers = workers_of(options, plan, cores);
  context.threads = std::max<std::size_t>(1, cores / workers);

  RunReports reports(options.report, options.output.folder, options.output.dry_run);
  std::optional<ResultsFolder> folder;
  if (to_folder) folder.emplace(options.output.folder, plan.folders(), journal);
  if (plan.own_results() > 0) {
    reports.warn(std::to_string(plan.own_results()) +
                 " files among the inputs are results of kv-polarize, and were left out");
  }
  reports.start(plan.inputs().size(), plan.frames());
  TransformRun run(context, to_folder ? &journal : nullptr, reports);
  run.run(workers);
  if (run.disk_is_full()) {
    reports.fail("the disk is full, and the run has stopped; make room, and go on with --resume");
  }
  if (folder) tidy(*folder, reports);
  return reports.finish(status_of(reports.totals(), !run.disk_is_full()));
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/batch/run_reports.h"

#include <iostream>
#include <utility>

#include "command_line/batch/provenance_record.h"
#include "command_line/exit_status.h"
#include "command_line/json_output.h"
#include "command_line/messages.h"
#include "command_line/path_text.h"
#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

Json json_of(const FrameReport& report) {
  constexpr const char* outcomes[] = {"frame", "failed", "skipped"};
  Json json = {{"event", outcomes[static_cast<std::size_t>(report.outcome)]},
               {"input", json_text(report.file)}};
  if (!report.page.empty()) json["name"] = report.name();
  if (report.frames != 1) json["frames"] = report.frames;
  if (!report.failure.empty()) json["error"] = report.failure;
  if (!report.warnings.empty()) json["warnings"] = report.warnings;
  Json& results = json["results"] = Json::array();
  for (const JournalFile& file : report.results) {
    results.push_back({{"file", file.name}, {"size", file.size}});
  }
  return json;
}

/// As a line of a list that @ reads: some names would be comments, lists or standard input there.
std::string listed_name(const std::filesystem::path& file) {
  const std::string name = text_of(file);
  const bool has_meaning = name == "-" || name.find_first_of(" \t#@") == 0;
  return (has_meaning ? "./" : "") + name;
}

}  // namespace

RunReports::RunReports(const ReportOptions& options, std::string destination, bool dry_run)
    : options_(options),
      destination_(std::move(destination)),
      dry_run_(dry_run),
      progress_(!options.quiet),
      events_(options.events) {
  if (options.list_failed) list_ = std::make_unique<PendingFile>(*options.list_failed);
}

void RunReports::start(std::size_t inputs, std::optional<std::size_t> frames) {
  expected_ = frames;
  stopwatch_ = {};
  Json json = {{"event", "start"}, {"software", software_name()}, {"inputs", inputs}};
  if (frames) json["frames"] = *frames;
  events_.write(json);
  progress_.update(0, 0, expected_);
}

void RunReports::add(FrameReport report) {
  const std::lock_guard lock(mutex_);
  totals_.add(report);
  for (const FrameReport& ready : order_.add(std::move(report))) tell(ready);
  progress_.update(totals_.seen(), totals_.failed, expected_);
}

void RunReports::warn(const std::string& line) {
  const std::lock_guard lock(mutex_);
  if (!options_.quiet) show("warning: " + line);
}

void RunReports::fail(const std::string& line) {
  const std::lock_guard lock(mutex_);
  show(line);
}

void RunReports::show(const std::string& line) {
  progress_.hide();
  complain(line);
}

void RunReports::tell(const FrameReport& report) {
  using enum FrameReport::Outcome;
  if (report.outcome == end_of_pipe) return;
  events_.write(json_of(report));
  if (!options_.quiet) {
    for (const std::string& warning : report.warnings) {
      show("warning: " + report.name() + ": " + warning);
    }
  }
  if (!report.failure.empty()) show(report.name() + ": " + report.failure);
  if (report.outcome == failed && list_ &&
      std::exchange(last_listed_, report.input) != report.input) {
    const std::string name = listed_name(report.file);
    const bool is_line = name.find('\n') == std::string::npos && !name.ends_with('\r');
    if (is_line) {
      listed_ += name + "\n";
    } else {
      show(report.name() + ": the name has an end of a line, and cannot be listed");
    }
  }
  if (report.outcome != failed) show_results(report);
}

void RunReports::show_results(const FrameReport& report) {
  if (dry_run_ && !options_.json && !options_.quiet) {
    progress_.hide();
    for (const JournalFile& file : report.results) {
      std::cout << printable(file.name) << "  " << file.size << " bytes at most\n";
    }
  } else if (options_.verbose) {
    show(report.name() + ": " +
         (report.outcome == FrameReport::Outcome::skipped
              ? "done before"
              : std::to_string(report.results.size()) + " results"));
  }
}

int RunReports::finish(int status) {
  const std::lock_guard lock(mutex_);
  for (const FrameReport& report : order_.rest()) tell(report);
  progress_.hide();
  totals_.seconds = stopwatch_.seconds();
  const std::string clipping = clipping_of(totals_);
  if (!clipping.empty() && !options_.quiet) show("warning: " + clipping);
  const auto after_failure = [&status] {
    if (status == exit_success) status = exit_some_failed;
  };
  if (!write_list()) after_failure();
  write_summary(status);
  if (!std::cout) {
    after_failure();
    show("the summary cannot be written to standard output; what was done is complete");
  }
  return status;
}

bool RunReports::write_list() {
  if (!list_) return true;
  try {
    list_->write(listed_.data(), listed_.size());
    list_->close();
    list_->publish();
    return true;
  } catch (const Fault& fault) {
    show(fault.what());
    return false;
  }
}

void RunReports::write_summary(int status) {
  Json json = kv::polarization::json_of(totals_);
  json["status"] = status;
  Json event = json;
  event["event"] = "end";
  events_.write(event);
  // What goes to standard output where results do, too, must not mix with them.
  const bool results_there = destination_ == "-";
  if (options_.json) {
    (results_there ? std::cerr : std::cout) << line_of(json) + "\n" << std::flush;
  } else if (!options_.quiet && !results_there) {
    std::cout << summary_of(totals_, printable(destination_), dry_run_) << std::endl;
  }
}

}  // namespace kv::polarization

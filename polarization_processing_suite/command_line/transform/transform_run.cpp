// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/transform/transform_run.h"

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

#include "command_line/batch/side_by_side.h"
#include "kv/polarization/fault.h"
#include "platform/process.h"

namespace kv::polarization {
namespace {

/// Puts a failure of the work into the report.
template <class Work>
bool attempt(FrameReport& report, Work work) {
  try {
    work();
    return true;
  } catch (const std::bad_alloc&) {
    report.failure =
        "there is not enough memory for this frame; close other programs, use a smaller one, or "
        "fewer at a time by --jobs";
  } catch (const std::exception& error) {
    // Also of the standard library, as of a folder that goes away: other frames may do.
    report.failure = error.what();
  }
  report.outcome = FrameReport::Outcome::failed;
  report.results.clear();
  return false;
}

FrameReport report_of(const PlannedInput& planned, std::size_t number) {
  FrameReport report;
  report.input = number;
  report.file = planned.input.is_standard_input() ? "standard input" : planned.input.path;
  return report;
}

}  // namespace

TransformRun::TransformRun(const TransformContext& context, Journal* journal, RunReports& reports)
    : context_(context),
      options_(context.options),
      journal_(journal),
      reports_(reports),
      inputs_(context.plan.inputs().size()),
      queue_(
          inputs_.size(), [this](std::size_t input) { return open(input); },
          [this](std::size_t input) { return context_.plan.inputs()[input].wanted; }) {}

void TransformRun::run(std::size_t workers) {
  run_side_by_side(workers, [this] { work(); });
}

void TransformRun::work() {
  FrameWork frame_work(context_);
  while (!platform::interrupted() && !disk_is_full_ && !reader_is_gone_) {
    const auto task = queue_.next();
    if (!task) return;
    transform(*task, frame_work);
  }
}

/// Null for an input that is done already, or cannot be opened, which is reported.
std::shared_ptr<FrameSource> TransformRun::open(std::size_t number) {
  const PlannedInput& planned = context_.plan.inputs()[number];
  FrameReport report = report_of(planned, number);
  report.frames = std::max<std::size_t>(planned.wanted.size(), 1);
  std::shared_ptr<FrameSource> source = planned.source;
  const bool opened = attempt(report, [&] {
    if (source == nullptr) {
      source =
          std::make_shared<FrameSource>(planned.input.path, options_.recipe.raw_shape, memory_);
    }
    if (source->count() != planned.pages) {
      throw Fault(FaultKind::file, "the file has changed since the run began; run again");
    }
  });
  if (opened && planned.pages && planned.wanted.empty()) {
    report.failure = "it has none of the pages that --pages names";
    report.outcome = FrameReport::Outcome::failed;
  } else if (opened && is_done(planned, *source)) {
    report.outcome = FrameReport::Outcome::skipped;
  } else if (opened && attempt(report, [&] { release_results(number); })) {
    inputs_[number] = std::make_shared<InputRun>(context_, number, source);
    return source;
  }
  reports_.add(std::move(report));
  return nullptr;
}

void TransformRun::release_results(std::size_t number) {
  if (journal_ == nullptr || options_.output.existing == Existing::refuse) return;
  std::vector<std::string> names;
  for (const auto& name : context_.plan.results_of_input(number)) {
    names.push_back(json_text(name));
  }
  journal_->release(names);
}

bool TransformRun::is_done(const PlannedInput& planned, const FrameSource& source) const {
  return journal_ != nullptr && options_.output.existing == Existing::resume && source.identity() &&
         journal_->is_done(json_text(planned.input.path), *source.identity(), context_.recipe_hash);
}

void TransformRun::transform(const FrameTask& task, FrameWork& work) {
  const std::shared_ptr<InputRun> input = inputs_[task.input];
  const PlannedInput& planned = input->planned();
  FrameReport report = report_of(planned, task.input);
  FramePlace place{task.input, task.page.value_or(0), planned.pages};
  const bool good = attempt(report, [&] {
    if (!read(task, *input, work, place, report)) return;
    work.compute(report);
    if (options_.output.dry_run) {
      report.results = work.estimate(planned, place);
    } else {
      write(*input, place, work, report);
    }
  });
  if (!good) after_failure(*input, work, report);
  if (input->frame_over()) inputs_[task.input].reset();  // with the memory of its file
  reports_.add(std::move(report));
}

/// False at the end of a pipe.
bool TransformRun::read(const FrameTask& task, InputRun& input, FrameWork& work, FramePlace& place,
                        FrameReport& report) {
  const PlannedInput& planned = input.planned();
  if (task.page) {
    const auto& wanted = planned.wanted;
    report.place =
        static_cast<std::size_t>(std::ranges::lower_bound(wanted, *task.page) - wanted.begin());
    report.last_of_input = report.place + 1 == wanted.size();
    if (*planned.pages > 1) report.page = ", page " + std::to_string(*task.page + 1);
    input.source().read(*task.page, work.frame(), report.warnings);
    return true;
  }
  report.last_of_input = false;
  report.page = ", in the pipe";
  const bool has_frame = input.source().read_next(work.frame(), report.place);
  place.page = report.place;
  report.page = ", frame " + std::to_string(place.page + 1);
  if (has_frame) return true;
  report.last_of_input = true;
  queue_.end(input.source());
  report.outcome = FrameReport::Outcome::end_of_pipe;
  return false;
}

void TransformRun::write(InputRun& input, const FramePlace& place, FrameWork& work,
                         FrameReport& report) {
  const Publishing publishing = options_.output.existing == Existing::refuse
                                    ? Publishing::as_new
                                    : Publishing::as_replacement;
  if (options_.output.to_standard_output()) return write_to_reader(input, place, work);
  work.write(input, place, report, publishing);
  if (!input.frame_done(report.results) || !input.planned().pages) return;
  const auto stacks = input.publish_stacks(publishing);
  report.results.insert(report.results.end(), stacks.begin(), stacks.end());
  if (journal_ != nullptr && input.source().identity()) journal_->add(input.journal_entry());
}

/// What comes behind a result that was not taken to its end would be useless.
void TransformRun::write_to_reader(InputRun& input, const FramePlace& place, FrameWork& work) {
  try {
    work.write_to_standard_output(input, place);
  } catch (const Fault&) {
    reader_is_gone_ = true;
    throw;
  }
}

void TransformRun::after_failure(InputRun& input, const FrameWork& work, FrameReport& report) {
  if (input.frame_failed() && !options_.output.to_standard_output()) {
    report.failure +=
        "; the files that its pages share are not written: --stack none writes the other pages";
  }
  if (journal_ == nullptr) return;
  std::error_code unknown;
  const auto space = std::filesystem::space(context_.plan.names().folder(), unknown);
  // What a frame's results can take: a plane of each kind, and pictures.
  const std::uintmax_t needed = 32 * work.frame_pixels();
  if (!unknown && space.available < needed) disk_is_full_ = true;
}

}  // namespace kv::polarization

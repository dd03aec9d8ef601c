#include "command_line/transform/transform_command.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <future>
#include <new>
#include <thread>

#include "command_line/batch/frame_queue.h"
#include "command_line/batch/run_reports.h"
#include "command_line/exit_status.h"
#include "command_line/options/values.h"
#include "command_line/transform/frame_work.h"
#include "command_line/transform/results_folder.h"
#include "kv/polarization/fault.h"
#include "platform/optional_library.h"
#include "platform/process.h"

namespace kv::polarization {
namespace {

constexpr const char* kLoggerLibrary = "kevrinth_qrm_logger";

/// All inputs, by workers that each take a frame through all of its steps.
class TransformRun {
 public:
  TransformRun(const TransformContext& context, Journal* journal, RunReports& reports)
      : context_(context),
        options_(context.options),
        journal_(journal),
        reports_(reports),
        inputs_(context.plan.inputs().size()),
        queue_(
            inputs_.size(), [this](std::size_t input) { return open(input); },
            [this](std::size_t input, std::size_t) {
              const auto& wanted = context_.plan.inputs()[input].wanted;
              return std::deque<std::size_t>(wanted.begin(), wanted.end());
            }) {}

  void run(std::size_t workers) {
    std::vector<std::future<void>> others;
    for (std::size_t i = 1; i < workers; ++i) {
      others.push_back(std::async(std::launch::async, [this] { work(); }));
    }
    work();
    for (std::future<void>& other : others) other.get();
  }

  bool disk_is_full() const { return disk_is_full_; }

 private:
  void work() {
    FrameWork frame_work(context_);
    while (!platform::interrupted() && !disk_is_full_) {
      const auto task = queue_.next();
      if (!task) return;
      transform(*task, frame_work);
    }
  }

  /// Null for an input that is done already, or cannot be opened, which is reported.
  std::shared_ptr<FrameSource> open(std::size_t number) {
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
    } else if (opened) {
      inputs_[number] = std::make_shared<InputRun>(context_, number, source);
      return source;
    }
    reports_.add(std::move(report));
    return nullptr;
  }

  bool is_done(const PlannedInput& planned, const FrameSource& source) const {
    return journal_ != nullptr && options_.output.existing == Existing::resume &&
           source.identity() &&
           journal_->is_done(json_text(planned.input.path), *source.identity(),
                             context_.recipe_hash);
  }

  void transform(const FrameTask& task, FrameWork& work) {
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
  bool read(const FrameTask& task, InputRun& input, FrameWork& work, FramePlace& place,
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
    const bool has_frame = input.source().read_next(work.frame(), place.page);
    report.place = place.page;
    report.page = ", frame " + std::to_string(place.page + 1);
    if (has_frame) return true;
    queue_.end(input.source());
    report.outcome = FrameReport::Outcome::end_of_pipe;
    return false;
  }

  void write(InputRun& input, const FramePlace& place, FrameWork& work, FrameReport& report) {
    const Publishing publishing = options_.output.existing == Existing::refuse
                                      ? Publishing::as_new
                                      : Publishing::as_replacement;
    if (options_.output.to_standard_output()) return work.write_to_standard_output(input, place);
    work.write(input, place, report, publishing);
    if (!input.frame_done(report.results) || !input.planned().pages) return;
    const auto stacks = input.publish_stacks(publishing);
    report.results.insert(report.results.end(), stacks.begin(), stacks.end());
    if (journal_ != nullptr && input.source().identity()) journal_->add(input.journal_entry());
  }

  void after_failure(InputRun& input, const FrameWork& work, FrameReport& report) {
    if (input.frame_failed()) {
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

  /// Puts a failure of the work into the report.
  template <class Work>
  bool attempt(FrameReport& report, Work work) {
    try {
      work();
      return true;
    } catch (const Fault& fault) {
      report.failure = fault.what();
    } catch (const std::bad_alloc&) {
      report.failure =
          "there is not enough memory for this frame; close other programs, use a smaller one, or "
          "fewer at a time by --jobs";
    }
    report.outcome = FrameReport::Outcome::failed;
    report.results.clear();
    return false;
  }

  static FrameReport report_of(const PlannedInput& planned, std::size_t number) {
    FrameReport report;
    report.input = number;
    report.file = planned.input.is_standard_input() ? "standard input" : planned.input.path;
    return report;
  }

  const TransformContext& context_;
  const TransformOptions& options_;
  Journal* journal_;
  RunReports& reports_;
  FileMemory memory_;
  std::vector<std::shared_ptr<InputRun>> inputs_;
  FrameQueue queue_;
  std::atomic<bool> disk_is_full_ = false;
};

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
    reports.warn("the disk is full, and the run has stopped; make room, and go on with --resume");
  }
  if (folder) folder->tidy();
  return reports.finish(status_of(reports.totals(), !run.disk_is_full()));
}

}  // namespace kv::polarization

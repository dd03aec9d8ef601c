// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/measure/measure_command.h"

#include <algorithm>
#include <functional>
#include <iostream>
#include <iterator>
#include <memory>
#include <mutex>

#include "command_line/frames/every_page.h"
#include "command_line/frames/frame_correction.h"
#include "command_line/frames/output_check.h"
#include "command_line/inputs/input_list.h"
#include "command_line/measure/region_list.h"
#include "command_line/messages.h"
#include "command_line/options/values.h"
#include "command_line/outputs/own_results.h"
#include "kv/image_files/pending_file.h"

namespace kv::polarization {
namespace {

class MeasureRun {
 public:
  /// Options and files must outlive it.
  MeasureRun(const MeasureOptions& options, const std::vector<std::filesystem::path>& files)
      : options_(options), files_(files), calibration_(calibration_of(options.settings)) {}

  PageCounts run() {
    const PageCounts counts = for_every_page(files_, options_.settings, [this] {
      const auto correction = std::make_shared<FrameCorrection>(
          options_.settings, calibration_, FrameCorrection::BelowBlack::kept, 1);
      return [this, correction](const PagePlace& place, const Frame& frame) {
        measure(place, correction->of(frame));
      };
    });
    std::ranges::stable_sort(results_, std::less<>(), &Measurement::place);
    return counts;
  }

  const std::vector<Measurement>& results() const { return results_; }

 private:
  void measure(const PagePlace& place, const KnownFrame& known) {
    std::vector<Measurement> results;
    if (options_.regions.empty()) {
      const NamedRegion whole{"whole frame", {0, 0, known.frame.width, known.frame.height}};
      results.push_back(measurement_of(place, known, whole));
    }
    for (const NamedRegion& region : options_.regions) {
      results.push_back(measurement_of(place, known, region));
    }
    const std::lock_guard lock(mutex_);
    std::ranges::move(results, std::back_inserter(results_));
  }

  Measurement measurement_of(const PagePlace& place, const KnownFrame& known,
                             const NamedRegion& region) const {
    return {files_[place.file], place, region, known.statistics_of(region.rectangle)};
  }

  const MeasureOptions& options_;
  const std::vector<std::filesystem::path>& files_;
  std::optional<Calibration> calibration_;
  std::mutex mutex_;
  std::vector<Measurement> results_;
};

std::vector<std::filesystem::path> files_of(const MeasureOptions& options) {
  const InputList list = list_inputs({.words = options.words,
                                      .recursive = options.recursive,
                                      .skip = options.skip,
                                      .headerless = options.settings.raw_shape.has_value(),
                                      .is_own_result = is_own_result});
  std::vector<std::filesystem::path> files;
  for (const Input& input : list.inputs) {
    if (input.is_standard_input()) {
      throw UsageError("frames of the standard input are not measured; name files or folders");
    }
    files.push_back(input.path);
  }
  return files;
}

/// Throws Fault when the output is something that is read.
void check_output(const MeasureOptions& options, std::vector<std::filesystem::path> inputs) {
  for (const auto& file : {options.region_file, options.settings.calibration}) {
    if (file) inputs.push_back(*file);
  }
  check_is_no_input(*options.output, inputs);
}

void write(const std::string& text, PendingFile& file) {
  file.write(text.data(), text.size());
  file.close();
}

void print_summary(const PageCounts& counts, const std::filesystem::path& output) {
  std::cout << counts.done << (counts.done == 1 ? " frame" : " frames") << " measured";
  if (counts.failed > 0) std::cout << ", " << counts.failed << " failed";
  std::cout << "; results in " << printable(output) << std::endl;
}

}  // namespace

int run_measure(MeasureOptions options) {
  if (options.region_file) {
    std::ranges::move(read_regions(*options.region_file), std::back_inserter(options.regions));
  }
  check_names(options.regions);
  const std::vector<std::filesystem::path> files = files_of(options);
  std::optional<PendingFile> file;
  if (options.output) {
    check_output(options, files);
    file.emplace(*options.output);  // whether it can be written, before many frames are read
  }
  MeasureRun run(options, files);
  const PageCounts counts = run.run();
  if (counts.done > 0) {
    const std::string text = text_of(run.results(), options.form);
    if (file) {
      write(text, *file);
      file->publish();
      print_summary(counts, *options.output);
    } else {
      PendingFile standard_output = PendingFile::standard_output();
      write(text, standard_output);
    }
  }
  return counts.exit_status();
}

}  // namespace kv::polarization

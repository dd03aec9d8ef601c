#include "command_line/measure/measure_command.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <iterator>
#include <memory>
#include <mutex>

#include "command_line/exit_status.h"
#include "command_line/frames/every_page.h"
#include "command_line/frames/frame_correction.h"
#include "command_line/frames/output_check.h"
#include "command_line/measure/region_list.h"
#include "kv/image_files/pending_file.h"
#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

/// Counts the region's cells that the correction found clipped, or rebuilt: its samples no longer
/// tell.
void count_corrected(const KnownFrame& known, const Rectangle& region, RegionStatistics& result) {
  if (known.flags.empty()) return;
  result.clipped = result.rescued = 0;
  for (int y = region.row; y + 1 < region.row + region.height; y += 2) {
    for (int x = region.column; x + 1 < region.column + region.width; x += 2) {
      const std::size_t upper = pixel_count(known.frame.width, y) + static_cast<std::size_t>(x);
      const std::size_t lower = upper + static_cast<std::size_t>(known.frame.width);
      const int flags =
          known.flags[upper] | known.flags[upper + 1] | known.flags[lower] | known.flags[lower + 1];
      if ((flags & quality::clipped) == 0) continue;
      ++result.clipped;
      const int rescued = quality::clipped | quality::rescued;
      if ((flags & (rescued | quality::bad_pixel)) == rescued) ++result.rescued;
    }
  }
}

/// Of the raw frame's counts.
RegionStatistics statistics_of(const KnownFrame& known, const Rectangle& region) {
  RegionStatistics result = region_statistics(known.frame, known.mosaic, known.samples, region);
  count_corrected(known, region, result);
  const double count = std::ldexp(1.0, -known.gained_bits);
  for (double* value :
       {&result.s0, &result.s1, &result.s2, &result.s0_sigma, &result.s1_sigma, &result.s2_sigma}) {
    *value *= count;
  }
  return result;
}

class MeasureRun {
 public:
  explicit MeasureRun(const MeasureOptions& options)
      : options_(options), calibration_(calibration_of(options.settings)) {}

  PageCounts run() {
    const PageCounts counts = for_every_page(options_.files, options_.settings, [this] {
      const auto correction = std::make_shared<FrameCorrection>(
          options_.settings, calibration_, FrameCorrection::BelowBlack::kept, 1);
      return [this, correction](const PagePlace& place, const Frame& frame) {
        measure(place, correction->of(frame));
      };
    });
    std::ranges::stable_sort(results_, {}, &Measurement::place);
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
    return {options_.files[place.file], place, region, statistics_of(known, region.rectangle)};
  }

  const MeasureOptions& options_;
  std::optional<Calibration> calibration_;
  std::mutex mutex_;
  std::vector<Measurement> results_;
};

void print(const std::string& text) {
  std::cout << text << std::flush;
  if (!std::cout) {
    throw Fault(FaultKind::file, "the results cannot be written to the standard output");
  }
}

std::vector<std::filesystem::path> inputs_of(const MeasureOptions& options) {
  std::vector<std::filesystem::path> inputs = options.files;
  for (const auto& file : {options.region_file, options.settings.calibration}) {
    if (file) inputs.push_back(*file);
  }
  return inputs;
}

}  // namespace

int run_measure(MeasureOptions options) {
  if (options.region_file) {
    std::ranges::move(read_regions(*options.region_file), std::back_inserter(options.regions));
  }
  check_names(options.regions);
  std::optional<PendingFile> file;
  if (options.output) {
    check_is_no_input(*options.output, inputs_of(options));
    file.emplace(*options.output);  // whether it can be written, before many frames are read
  }
  MeasureRun run(options);
  const PageCounts counts = run.run();
  if (counts.done > 0) {
    const std::string text = text_of(run.results(), options.form);
    if (file) {
      file->write(text.data(), text.size());
      file->close();
      file->publish();
    } else {
      print(text);
    }
  }
  return counts.exit_status();
}

}  // namespace kv::polarization

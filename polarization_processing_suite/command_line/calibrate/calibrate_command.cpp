// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/calibrate/calibrate_command.h"

#include <iostream>

#include "command_line/calibrate/stack_manifest.h"
#include "command_line/exit_status.h"
#include "command_line/messages.h"
#include "command_line/progress_line.h"
#include "kv/calibration/calibration_file.h"
#include "kv/calibration/report.h"
#include "kv/image_files/pending_file.h"
#include "kv/polarization/fault.h"
#include "platform/process.h"

namespace kv::polarization {
namespace {

/// The frames of a manifest's files, in their order, each of which can be read again.
class Stack {
 public:
  explicit Stack(const CalibrateOptions& options)
      : options_(options), entries_(read_manifest(options.manifest)) {}

  std::size_t files() const { return entries_.size(); }

  /// Gives all frames of a file to the fit.
  void add_file(std::size_t index, CalibrationFit& fit) {
    const ManifestEntry& entry = entries_[index];
    with_name(entry, [&] {
      open(index);
      for (std::size_t page = 0; page < reader_->count(); ++page) {
        read(page);
        const std::string page_name =
            reader_->count() > 1 ? ", page " + std::to_string(page + 1) : "";
        fit.add(frame_, {entry.kind, entry.angle, entry.name + page_name});
        places_.push_back({index, page});
      }
    });
  }

  /// A frame once more, by the order of adding.
  FrameView again(std::size_t number) {
    const Place& place = places_[number];
    with_name(entries_[place.file], [&] {
      open(place.file);
      read(place.page);
    });
    return frame_;
  }

 private:
  template <class Work>
  void with_name(const ManifestEntry& entry, Work work) {
    try {
      work();
    } catch (const Fault& fault) {
      throw Fault(fault.kind(), entry.file.string() + ": " + fault.what());
    }
  }

  void open(std::size_t index) {
    if (reader_ && open_ == index) return;
    reader_ = open_frames(entries_[index].file, options_.raw_shape);
    open_ = index;
  }

  void read(std::size_t page) {
    reader_->read(page, frame_);
    if (options_.bit_depth) frame_.bit_depth = *options_.bit_depth;
  }

  struct Place {
    std::size_t file;
    std::size_t page;
  };

  const CalibrateOptions& options_;
  std::vector<ManifestEntry> entries_;
  std::vector<Place> places_;
  std::unique_ptr<FrameReader> reader_;
  std::size_t open_ = 0;
  Frame frame_;
};

void print_result(const Calibration& calibration, const CalibrateOptions& options,
                  const std::filesystem::path& report) {
  std::size_t used = 0;
  for (const FrameRecord& frame : calibration.frames) {
    if (frame.used) {
      ++used;
    } else {
      complain("warning: " + frame.name + ": not used: " + frame.refusal);
    }
  }
  std::size_t doubts = 0;
  for (const Finding& finding : calibration.findings) {
    if (finding.good) continue;
    ++doubts;
    complain("warning: " + finding.name + ": " + finding.verdict);
  }
  std::cout << used << " of " << calibration.frames.size() << " frames used; "
            << calibration.findings.size() - doubts << " of " << calibration.findings.size()
            << " checks good; calibration in " << printable(options.file) << ", report in "
            << printable(report) << std::endl;
}

/// Whether both files can be written, before many frames are read for them.
void check_outputs(const std::filesystem::path& calibration, const std::filesystem::path& report) {
  if (calibration.extension() != ".json") {
    throw Fault(FaultKind::argument, "a calibration cannot be written to " + calibration.string() +
                                         "; its name must end in .json");
  }
  for (const auto& file : {calibration, report}) PendingFile never_published(file);
}

}  // namespace

int run_calibrate(const CalibrateOptions& options) {
  const std::filesystem::path report =
      options.report ? *options.report
                     : std::filesystem::path(options.file).replace_extension(".html");
  check_outputs(options.file, report);
  Stack stack(options);
  CalibrationFit fit(options.fit);
  {
    ProgressLine progress(stack.files() > 1, "files");
    for (std::size_t index = 0; index < stack.files(); ++index) {
      if (platform::interrupted()) return exit_interrupted;
      progress.update(index, 0, stack.files());
      stack.add_file(index, fit);
    }
  }
  Calibration calibration = fit.finish([&](std::size_t number) { return stack.again(number); });
  calibration.camera = options.camera;
  calibration.date = options.date;
  calibration.software = "kv-polarize " KV_VERSION;
  save_calibration(calibration, options.file);
  save_calibration_report(report, calibration);
  print_result(calibration, options, report);
  return exit_success;
}

}  // namespace kv::polarization

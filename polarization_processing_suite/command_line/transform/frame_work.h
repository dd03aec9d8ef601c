// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "command_line/batch/frame_report.h"
#include "command_line/transform/input_run.h"
#include "kv/calibration/frame_corrector.h"
#include "kv/pictures/picture_maps.h"
#include "kv/pictures/ranges.h"
#include "kv/polarization/processor.h"

namespace kv::polarization {

/// One worker: its memory goes from frame to frame.
class FrameWork {
 public:
  explicit FrameWork(const TransformContext& context);

  /// Where frames are to be read to.
  Frame& frame() { return frame_; }
  std::size_t frame_pixels() const { return frame_.samples.size(); }

  /// Corrects the frame that was read, and computes everything that results are made of. Adds what
  /// is odd about it to the report. Throws Fault.
  void compute(FrameReport& report);

  /// Writes the results of the frame that was computed. Throws Fault.
  void write(InputRun& input, const FramePlace& place, FrameReport& report, Publishing publishing);

  /// Writes its only result to standard output. Throws Fault.
  void write_to_standard_output(InputRun& input, const FramePlace& place);

  /// What the results would be, with sizes that they do not exceed. A file that pages share is told
  /// with the first of them.
  std::vector<JournalFile> estimate(const PlannedInput& planned, const FramePlace& place) const;

 private:
  const Frame& corrected();
  void compute_planes(FrameReport& report);
  void touch_planes();
  void compute_pictures();
  void check_samples(FrameReport& report) const;

  GreyImage grey_image_of(const Result& result) const;
  FloatImage float_image_of() const;
  void write_result(const Result& result, PendingFile& file, const WriteOptions& options) const;
  void add_to_stack(InputRun& input, std::size_t frame, const Result& result);
  ImageShape shape_of(const Result& result) const;
  std::uint64_t most_bytes_of(const Result& result) const;

  const TransformContext& context_;
  const Recipe& recipe_;
  Processor processor_;
  Frame frame_;
  const Frame* source_ = &frame_;  ///< of the planes: the frame, or the corrected one
  int raw_bit_depth_ = 0;
  std::optional<FrameCorrector> corrector_;  // for frames of the size of corrected_
  Frame corrected_;
  Planes planes_;
  bool planes_touched_ = false;
  Buffer<std::uint16_t> mean_;
  PictureSource picture_source_;
  PictureRanges ranges_;
};

}  // namespace kv::polarization

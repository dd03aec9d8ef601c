// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/view/view_command.h"

#include <iostream>
#include <string>

#include "command_line/exit_status.h"
#include "command_line/frames/every_page.h"
#include "command_line/frames/output_check.h"
#include "command_line/messages.h"
#include "command_line/path_text.h"
#include "kv/image_files/image_writer.h"
#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

/// The format of the sheet. Refuses an output that cannot be, before the frame is read.
ImageFormat format_of_output(const ViewOptions& options) {
  std::vector<std::filesystem::path> inputs = {options.file};
  if (options.settings.calibration) inputs.push_back(*options.settings.calibration);
  check_is_no_input(options.output, inputs);
  if (!options.overwrite && std::filesystem::exists(options.output)) {
    throw Fault(FaultKind::argument, text_of(options.output) +
                                         " is there already; name another output, or replace it "
                                         "by --overwrite");
  }
  return format_for(options.output);
}

std::string title_of(const ViewOptions& options, std::size_t pages, const Frame& frame) {
  std::string title = text_of(options.file.filename());
  if (pages > 1) {
    title += ", page " + std::to_string(options.page) + " of " + std::to_string(pages);
  }
  return title + ": " + std::to_string(frame.width) + " x " + std::to_string(frame.height) +
         " pixels, " + std::to_string(frame.bit_depth) + " bits" +
         (options.settings.calibration ? ", calibrated" : "");
}

FrameSheet sheet_of_file(const ViewOptions& options,
                         const std::optional<Calibration>& calibration) {
  const auto reader = open_frames_of_user(options.file, options.settings.raw_shape);
  const std::size_t pages = reader->count();
  if (options.page > pages) {
    throw Fault(FaultKind::argument, "there is no page " + std::to_string(options.page) +
                                         "; the last one is " + std::to_string(pages));
  }
  const PagePlace place = {.page = options.page - 1, .pages = pages};
  Frame frame;
  read_page(*reader, place.page, options.settings, name_of(options.file, place), frame);
  FrameCorrection correction(options.settings, calibration, FrameCorrection::BelowBlack::zero, 0);
  SheetSettings sheet = options.sheet;
  sheet.title = title_of(options, pages, frame);
  return sheet_of(correction.of(frame), frame.bit_depth, sheet);
}

/// How the pictures differ in size from the frame; empty when they do not.
std::string scale_text(const SheetLayout& layout) {
  if (layout.reduction > 1) return ", pictures reduced by " + std::to_string(layout.reduction);
  if (layout.enlargement > 1) return ", pictures enlarged by " + std::to_string(layout.enlargement);
  return "";
}

}  // namespace

int run_view(const ViewOptions& options) {
  const ImageFormat format = format_of_output(options);
  PendingFile file(options.output);  // whether it can be written, before all the work
  const auto calibration = calibration_of(options.settings);
  const FrameSheet sheet = [&] {
    try {
      return sheet_of_file(options, calibration);
    } catch (const Fault& fault) {
      throw Fault(fault.kind(), text_of(options.file) + ": " + fault.what());
    }
  }();
  write_image(file, format, sheet.picture, {.title = sheet.layout.title});
  file.close();
  options.overwrite ? file.publish() : file.publish_new();
  std::cout << "sheet of " << sheet.picture.width << " x " << sheet.picture.height << " pixels in "
            << printable(options.output) << scale_text(sheet.layout) << std::endl;
  return exit_success;
}

}  // namespace kv::polarization

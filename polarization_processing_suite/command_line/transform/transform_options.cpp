// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>

#include "command_line/batch/journal.h"
#include "command_line/command.h"
#include "command_line/options/common_options.h"
#include "command_line/options/values.h"
#include "command_line/outputs/name_template.h"
#include "command_line/transform/page_list.h"
#include "command_line/transform/result_options.h"
#include "command_line/transform/results.h"
#include "command_line/transform/transform_command.h"

namespace kv::polarization {
namespace {

/// The table of formats, as far as this build has them.
std::string format_table() {
  std::string table;
  for (const ImageFormatTraits& traits : image_formats()) {
    const std::string_view text = traits.available() ? traits.summary : traits.missing;
    table += "    " + std::string(traits.name) + std::string(6 - traits.name.size(), ' ') +
             std::string(text) + "\n";
  }
  return table + "\nHeaderless frames need --width, --height and --raw-format.";
}

constexpr const char* kInputDetails =
    "A folder stands for its frame files, in the order of the numbers in their names. Patterns in "
    "quotes, such as 'night/*.png' and 'night/**/*.tiff', are expanded by the tool, as are ranges, "
    "'frame_{0000..0999}.png' and, in steps, 'frame_{0000..0999x10}.png'. @LIST takes the lines of "
    "a file, @- those of standard input. - takes frames from standard input. Results of "
    "kv-polarize in folders and patterns are left out.";

CommandPage transform_page() {
  return {
      .name = "transform",
      .summary = "Write planes and pictures of raw frames",
      .details =
          "Results, for frame.png: frame_azimuth.png and so on; frame_normalized_stokes.tiff holds "
          "S1/S0 and S2/S0 as two float channels whatever the format. The angle in degrees is "
          "azimuth * 180 / output-max - 90: 0 along the rows, counter-clockwise. intensity is half "
          "the sum of the four samples and reaches full scale at half of the samples' range; mean "
          "is their mean in the samples' own units, which never clips.\n"
          "\n"
          "Pictures are made of every frame, whatever --planes and --output-max are: "
          "frame_intensity_picture.png and so on. Intensity is encoded as sRGB with the brightest "
          "0.2 per cent white. In angle pictures hue is the angle (0 red, 45 yellow-green, 90 "
          "cyan, "
          "135 violet) and brightness, or saturation in the light ones, DoLP. Legends tell units "
          "and ranges.\n"
          "\n"
          "A bad frame is reported, and the others are still transformed.\n"
          "\n"
          "Formats of frames and results:\n"
          "\n" +
          format_table(),
      .examples = {"kv-polarize transform frame.png -o planes",
                   "kv-polarize transform -r night -o planes --phase 90 --resume",
                   "kv-polarize transform stack.tiff -o planes --planes dolp,azimuth --format tiff",
                   "kv-polarize transform night/*.tif -o planes --phase 90 --calibration "
                   "camera.json"}};
}

class TransformCommand : public Command {
 public:
  explicit TransformCommand(CLI::App& app) : Command(app, transform_page()) {
    add_inputs();
    add_outputs();
    add_frames();
    add_result_options(options(), options_.recipe);
    add_run();
    add_reports();
  }

  int run() override {
    options_.recipe.mosaic = mosaic_->value();
    options_.recipe.mosaic_given = mosaic_->given();
    options_.recipe.raw_shape = raw_shape_->value();
    if (overwrite_ && resume_) {
      throw UsageError("--overwrite and --resume exclude each other; give one of them");
    }
    options_.output.existing = overwrite_ ? Existing::overwrite
                               : resume_  ? Existing::resume
                                          : Existing::refuse;
    if (results_of(options_.recipe).empty()) {
      throw UsageError("there is nothing to write: --planes or --pictures must name something");
    }
    return run_transform(options_);
  }

 private:
  void add_inputs() {
    InputOptions& input = options_.input;
    options().add_arguments({.names = "FRAME",
                             .value = "FILE",
                             .summary = "Raw mosaic frames: files, folders, patterns, @LIST, -",
                             .details = kInputDetails,
                             .required = true,
                             .completion = Completion::file},
                            input.words, 1, 1 << 30);
    options().add_flag({.names = "-r,--recursive",
                        .summary = "Take the folders within folders, too",
                        .details = "Results then keep the tree of folders."},
                       input.recursive);
    options().add(
        {.names = "--skip",
         .value = "PATTERN",
         .summary = "Leave out inputs of that name, such as '*_dark*'",
         .details = "Held against the name and the whole path of each file. It may be "
                    "given several times."},
        [&input](const std::string& pattern) { input.skip.push_back(pattern); },
        [&input] { input.skip.clear(); });
    options().add(
        {.names = "--pages",
         .value = "LIST",
         .summary = "Frames of each file, from 1 up, such as 1,5..8",
         .initial = "all"},
        [&input](const std::string& text) { input.pages = page_list_of(text); },
        [&input] { input.pages.clear(); });
  }

  void add_outputs() {
    OutputOptions& output = options_.output;
    options().add({.names = "-o,--output",
                   .value = "FOLDER",
                   .summary = "Folder for the results, made if missing; - for standard output",
                   .details = "Standard output takes one plane, or one picture: of a single frame "
                              "in any format, of many frames one behind the other in the formats "
                              "raw, npy and pgm.",
                   .required = true,
                   .completion = Completion::folder},
                  path_into(output.folder));
    options().add({.names = "--names",
                   .value = "TEMPLATE",
                   .summary = "Names of the results, without their endings",
                   .details = "Of {name}, the input's name without its ending; {folder}, the one "
                              "that it was found in; {plane}; {page}; {index}, the input's number "
                              "in the run. Numbers may have a width, as {page:05}. The template "
                              "may make folders. Results of the same name are refused before "
                              "anything is written.",
                   .initial = "{name}_{plane}, with {page} and {folder} where there are several"},
                  [&output](const std::string& text) {
                    const NameTemplate checked(text);
                    output.names = text;
                  });
    options().add(
        {.names = "--stack",
         .value = "WHAT",
         .summary = "Images that share a file",
         .details = "planes: all pages of an input, a file for each plane, as input files "
                    "of several frames become by default in formats that hold several "
                    "images (tiff, pgm, npy, raw). inputs: all 16-bit planes of all pages "
                    "of an input, in one file. none: each image has a file of its own. "
                    "Pictures always have. A page that fails leaves its stack unwritten.",
         .choices = {kStackingNames.begin(), kStackingNames.end()},
         .initial = "planes"},
        [&output](const std::string& name) {
          output.stacking = named_value<Stacking>(name, kStackingNames);
        });
    options().add_flag(
        {.names = "--overwrite", .summary = "Replace results that are there already, else refused"},
        overwrite_);
    options().add_flag(
        {.names = "--resume",
         .summary = "Go on with a run that was ended, or whose inputs grew",
         .details = std::string("The journal in the folder of results, ") + kJournalName +
                    ", tells which inputs were done with the same options by the same version. "
                    "Inputs whose content changed, and all others, are done, in place of what was "
                    "there of them."},
        resume_);
    options().add_flag(
        {.names = "--dry-run",
         .summary = "Tell what would be written, and its size; read, but write nothing"},
        output.dry_run);
  }

  void add_frames() {
    Recipe& recipe = options_.recipe;
    mosaic_.emplace(options());
    add_bit_depth(options(), recipe.bit_depth);
    options().add(
        {.names = "--calibration",
         .value = "FILE",
         .summary = "Correct the frames by what kv-polarize calibrate found of their camera",
         .details = "It also tells --phase and --origin, unless they are given.",
         .completion = Completion::file},
        path_into(recipe.calibration), [&recipe] { recipe.calibration.reset(); });
    raw_shape_.emplace(options());
  }

  void add_run() {
    options().add({.names = "-j,--jobs",
                   .value = "N",
                   .summary = "Frames at the same time",
                   .details = "Each takes the memory of its planes and pictures, some 30 bytes a "
                              "pixel with all of them.",
                   .initial = "one for each core"},
                  whole_number_into(options_.jobs, 1, 1024));
    options().add({.names = "--log",
                   .value = "LEVEL",
                   .summary = "Show log lines of the processing library up to this severity",
                   .details = "2: errors; 7: also the duration of each of its calls."},
                  whole_number_into(options_.log_level, 0, 7),
                  [this] { options_.log_level.reset(); });
  }

  void add_reports() {
    ReportOptions& report = options_.report;
    options().add_flag({.names = "-q,--quiet", .summary = "Tell failures alone, on standard error"},
                       report.quiet);
    options().add_flag({.names = "-v,--verbose", .summary = "Tell every frame, on standard error"},
                       report.verbose);
    options().add_flag({.names = "--json", .summary = "Write the summary as JSON"}, report.json);
    options().add(
        {.names = "--events",
         .value = "FD",
         .summary = "Write a line of JSON for each frame to that descriptor, such as 3",
         .details = "Events are start, frame, failed, skipped and end. For programs that watch the "
                    "run: kv-polarize transform ... --events 3 3>events.jsonl"},
        whole_number_into(report.events, 1, 1023), [&report] { report.events.reset(); });
    options().add({.names = "--list-failed",
                   .value = "FILE",
                   .summary = "Write the names of inputs that failed, for another run by @FILE",
                   .completion = Completion::file},
                  path_into(report.list_failed), [&report] { report.list_failed.reset(); });
  }

  TransformOptions options_;
  std::optional<MosaicOptions> mosaic_;
  std::optional<RawShapeOptions> raw_shape_;
  bool overwrite_ = false;
  bool resume_ = false;
};

}  // namespace

std::unique_ptr<Command> make_transform_command(CLI::App& app) {
  return std::make_unique<TransformCommand>(app);
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/command.h"
#include "command_line/measure/measure_command.h"
#include "command_line/measure/region_list.h"
#include "command_line/options/values.h"

namespace kv::polarization {
namespace {

CommandPage measure_page() {
  return {
      .name = "measure",
      .summary = "Tell Stokes values, DoLP and angle of regions of raw frames",
      .details =
          "Each region of each frame is one measurement: the Stokes values of its 2x2 cells are "
          "added up, and DoLP and angle are those of the sum, so that noise averages out and "
          "angles around 90 degrees do not cancel. Without a region each frame is measured as a "
          "whole.\n"
          "\n"
          "Cells that share no sample are counted, from the region's upper left pixel on; those "
          "with a clipped sample, or a bad pixel by the calibration, are left out, and their "
          "numbers are told.\n"
          "\n"
          "S0 = (I0 + I45 + I90 + I135) / 2, S1 = I0 - I90 and S2 = I45 - I135 are means over "
          "the cells, in counts of the raw samples above black. The angle is in degrees, above "
          "-90 up to 90: 0 along the rows and counter-clockwise.\n"
          "\n"
          "Errors are standard errors by the noise of the sensor, as far as --sensor-noise or "
          "--calibration tells it. What differs within a region is not in them, nor is what is "
          "wrong with the sensor as a whole. The error of an angle is told where DoLP is 3 of its "
          "errors or more. DoLP is never negative, and so noise raises it; the debiased one is "
          "free of that on average.\n"
          "\n"
          "A bad frame is reported, and the others are still measured.",
      .examples = {"kv-polarize measure night --region sky=100,80,64,64 --region "
                   "sea=100,900,64,64",
                   "kv-polarize measure night --regions places.csv --calibration "
                   "camera.json -o night.csv",
                   "kv-polarize measure frame.png --phase 90 --sensor-noise 0.39,2.5 --as json"}};
}

class MeasureCommand : public Command {
 public:
  explicit MeasureCommand(CLI::App& app) : Command(app, measure_page()) {
    options().add_arguments(
        {.names = "FRAME",
         .value = "FILE",
         .summary = "Raw mosaic frames: files, folders, patterns, @LIST",
         .details = "As the command transform takes them, but for standard input. All pages of "
                    "files of several frames are measured.",
         .required = true,
         .completion = Completion::file},
        options_.words, 1, 1 << 30);
    options().add_flag(
        {.names = "-r,--recursive", .summary = "Take the folders within folders, too"},
        options_.recursive);
    options().add(
        {.names = "--skip",
         .value = "PATTERN",
         .summary = "Leave out inputs of that name, such as '*_dark*'",
         .details = "Held against the name and the whole path of each file. It may be "
                    "given several times."},
        [this](const std::string& pattern) { options_.skip.push_back(pattern); },
        [this] { options_.skip.clear(); });
    options().add_flag(
        {.names = "--rescue",
         .summary = "Rebuild the only clipped sample of a cell from its other three",
         .details = "By I0 + I90 = I45 + I135, which holds as far as the gains of the four "
                    "classes of pixels are alike; a calibration makes them so."},
        rescue_);
    add_regions();
    add_output();
  }

  int run() override {
    options_.settings = frames_.value();
    options_.settings.samples.rescue = rescue_;
    if (output_ != "-") options_.output = output_;
    options_.form = form_.value_or(form_of_output());
    return run_measure(options_);
  }

 private:
  void add_regions() {
    options().add(
        {.names = "--region",
         .value = "[NAME=]X,Y,W,H",
         .summary = "Measure there: column, row, width and height; may be given several times",
         .details = "In pixels of the frame. Names are what results call the regions.",
         .initial = "the whole frame"},
        [this](const std::string& text) { options_.regions.push_back(named_region_of(text)); },
        [this] { options_.regions.clear(); });
    options().add({.names = "--regions",
                   .value = "FILE",
                   .summary = "Measure the regions of a list: name,column,row,width,height",
                   .details = "Comma-separated values whose first line names the columns, in any "
                              "order and beside others; name may be missing. Lines that begin "
                              "with # are left out. They follow those of --region.",
                   .completion = Completion::file},
                  path_into(options_.region_file), [this] { options_.region_file.reset(); });
  }

  void add_output() {
    options().add(
        {.names = "--as",
         .value = "FORM",
         .summary = "Form of the results",
         .details = "csv and json tell every number in full, an empty field or null "
                    "standing for what there is not; a table is for people, rounded, "
                    "and leaves out columns that tell nothing.",
         .choices = measurement_forms(),
         .initial = "by the ending of -o, else table"},
        [this](const std::string& name) {
          form_ = measurement_form_named(choice_of(name, measurement_forms()));
        },
        [this] { form_.reset(); });
    options().add({.names = "-o,--output",
                   .value = "FILE",
                   .summary = "The file to write; - is the standard output",
                   .details = "An earlier file of that name is replaced when all is measured.",
                   .initial = "-",
                   .completion = Completion::file},
                  path_into(output_));
  }

  MeasurementForm form_of_output() const {
    const std::string ending = output_.extension().string();
    const auto form = measurement_form_named(ending.empty() ? ending : ending.substr(1));
    return form.value_or(MeasurementForm::table);
  }

  FrameOptions frames_{options()};
  MeasureOptions options_;
  std::optional<MeasurementForm> form_;
  std::filesystem::path output_ = "-";
  bool rescue_ = false;
};

}  // namespace

std::unique_ptr<Command> make_measure_command(CLI::App& app) {
  return std::make_unique<MeasureCommand>(app);
}

}  // namespace kv::polarization

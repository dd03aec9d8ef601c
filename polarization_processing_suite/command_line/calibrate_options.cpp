#include "command_line/calibrate_command.h"
#include "command_line/commands.h"
#include "command_line/common_options.h"

namespace kv::polarization {
namespace {

constexpr const char* kManifest =
    "The manifest is a text of comma-separated values, a line for each file of frames:\n"
    "\n"
    "  file,kind,angle\n"
    "  film_000.tiff,polarized,0\n"
    "  film_005.tiff,polarized,5\n"
    "  dark.tiff,dark,\n"
    "  flat.tiff,flat,\n"
    "\n"
    "polarized: a uniform source behind a linear polarizer at that angle, in degrees, 0 along the\n"
    "image's rows and counter-clockwise as seen in the image. dark: no light, same exposure. "
    "flat:\n"
    "the source without a polarizer. Paths are relative to the manifest.\n"
    "\n"
    "The report, a page for any browser, tells whether the calibration is good.";

class CalibrateCommand : public Command {
 public:
  explicit CalibrateCommand(CLI::App& app)
      : Command(
            *app.add_subcommand("calibrate", "Find what a sensor is from frames of known light")),
        command_(options()),
        mosaic_(command_),
        raw_shape_(command_) {
    command_.footer(kManifest);
    command_.add_option("--manifest", options_.manifest, "The list of the frames")
        ->type_name("FILE")
        ->required();
    command_
        .add_option("-o,--output", options_.file,
                    "The calibration to write: NAME.json, maps beside it")
        ->type_name("FILE")
        ->required();
    command_.add_option("--report", options_.report, "The report to write (default: NAME.html)")
        ->type_name("FILE");
    add_bit_depth(command_, options_.bit_depth);
    command_
        .add_option("--clip-level", options_.fit.clip_level,
                    "Sample from which on a pixel counts as clipped (default: the greatest one)")
        ->type_name("N")
        ->check(CLI::Range(1, 65535));
    command_
        .add_option("--black-level", options_.fit.black_level,
                    "Counts of all pixels in the dark, for stacks without dark frames")
        ->type_name("N")
        ->check(CLI::Range(0.0, 65535.0));
    command_
        .add_option("--source-dolp", options_.fit.source_dolp,
                    "Degree of polarization of the light behind the polarizer")
        ->type_name("N")
        ->check(CLI::Range(0.5, 1.0))
        ->capture_default_str();
    command_.add_flag("--unknown-angles", unknown_angles_,
                      "Believe the first polarized frame's angle alone, and find the others");
    command_.add_option("--camera", options_.camera, "Model and serial number, for the record")
        ->type_name("TEXT");
    command_.add_option("--date", options_.date, "When the frames were taken, for the record")
        ->type_name("TEXT");
  }

  int run() override {
    options_.fit.mosaic = mosaic_.value();
    options_.raw_shape = raw_shape_.value();
    options_.fit.angles_known = !unknown_angles_;
    return run_calibrate(options_);
  }

 private:
  CLI::App& command_;
  MosaicOptions mosaic_;
  RawShapeOptions raw_shape_;
  CalibrateOptions options_;
  bool unknown_angles_ = false;
};

}  // namespace

std::unique_ptr<Command> make_calibrate_command(CLI::App& app) {
  return std::make_unique<CalibrateCommand>(app);
}

}  // namespace kv::polarization

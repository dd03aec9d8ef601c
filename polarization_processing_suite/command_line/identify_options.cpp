#include <algorithm>
#include <vector>

#include "command_line/commands.h"
#include "command_line/common_options.h"
#include "command_line/identify_command.h"

namespace kv::polarization {
namespace {

constexpr const char* kWhatCanBeTold =
    "One frame cannot tell how the polarizers lie: the redundancy of its cells holds for all "
    "phases\n"
    "alike. A polarizing film, or a screen, that is turned between two frames by a known angle "
    "tells\n"
    "the sense, which leaves two phases that differ by 90 degrees; with the known angle of its "
    "light\n"
    "in the first frame, by --angle, it tells the phase. Turn by some 45 degrees; exit status 1 "
    "says\n"
    "that nothing could be told.";

class IdentifyCommand : public Command {
 public:
  explicit IdentifyCommand(CLI::App& app)
      : Command(*app.add_subcommand("identify", "Find how the polarizers lie, from turned light")),
        command_(options()),
        raw_shape_(command_) {
    command_.footer(kWhatCanBeTold);
    command_.add_option("FRAME", files_, "A frame before and one after the turn")
        ->type_name("FILE")
        ->expected(2)
        ->required();
    command_
        .add_option("--turned", options_.light.turn,
                    "By how much the light was turned, degrees, counter-clockwise in the image")
        ->type_name("DEGREES")
        ->check(CLI::Range(-360.0, 360.0))
        ->required();
    command_
        .add_option("--angle", options_.light.angle_of_first,
                    "Angle of the light in the first frame: 0 along the rows, counter-clockwise")
        ->type_name("DEGREES")
        ->check(CLI::Range(-360.0, 360.0));
    command_
        .add_option("--angle-error", options_.light.angle_error,
                    "Standard deviation of these angles, degrees")
        ->type_name("DEGREES")
        ->check(CLI::Range(0.01, 45.0))
        ->capture_default_str();
    command_.add_flag("--not-mirrored", not_mirrored_, "The image is known not to be mirrored");
    command_.add_option("--region", region_, "Column, row, width and height of where the light is")
        ->type_name("X,Y,W,H")
        ->delimiter(',')
        ->expected(4);
    command_
        .add_option("--black-level", options_.light.black_level, "Counts of a pixel in the dark")
        ->type_name("N")
        ->check(CLI::Range(0.0, 65535.0));
    add_bit_depth(command_, options_.bit_depth);
  }

  int run() override {
    std::ranges::copy(files_, options_.files.begin());
    options_.raw_shape = raw_shape_.value();
    options_.light.may_be_mirrored = !not_mirrored_;
    if (!region_.empty()) options_.light.region = {region_[0], region_[1], region_[2], region_[3]};
    return run_identify(options_);
  }

 private:
  CLI::App& command_;
  RawShapeOptions raw_shape_;
  IdentifyOptions options_;
  std::vector<std::filesystem::path> files_;
  std::vector<int> region_;
  bool not_mirrored_ = false;
};

}  // namespace

std::unique_ptr<Command> make_identify_command(CLI::App& app) {
  return std::make_unique<IdentifyCommand>(app);
}

}  // namespace kv::polarization

#include <algorithm>

#include "command_line/commands.h"
#include "command_line/common_options.h"
#include "command_line/transform_command.h"

namespace kv::polarization {
namespace {

constexpr const char* kResults =
    "Results, for frame.png: frame_azimuth.png and so on; frame_normalized_stokes.tiff holds S1/S0 "
    "and\n"
    "S2/S0 as two float channels whatever the format. The angle in degrees is\n"
    "azimuth * 180 / output-max - 90: 0 along the rows, counter-clockwise. intensity is half the "
    "sum\n"
    "of the four samples and reaches full scale at half of the samples' range; mean is their mean "
    "in\n"
    "the samples' own units, which never clips.\n"
    "\n"
    "Pictures are made of every frame, whatever --planes and --output-max are: "
    "frame_intensity_picture.png\n"
    "and so on. Intensity is encoded as sRGB with the brightest 0.2 per cent white. In angle "
    "pictures hue is\n"
    "the angle (0 red, 45 yellow-green, 90 cyan, 135 violet) and brightness, or saturation in the "
    "light ones,\n"
    "DoLP. Legends tell units and ranges.\n"
    "\n"
    "A bad frame is reported, and the others are still transformed.";

/// The names of all planes, as a sentence lists them.
std::string plane_names() {
  std::string names;
  for (const PlaneTraits& traits : kPlanes) {
    if (!names.empty()) names += ", ";
    names += traits.name;
  }
  return names + ", mean";
}

void parse_planes(const std::string& list, TransformOptions& options) {
  options.planes = {};
  for (const std::string& name : split_list(list)) {
    const auto plane = plane_named(name);
    if (name == "mean") {
      options.mean = true;
    } else if (plane) {
      options.planes.add(*plane);
    } else {
      throw CLI::ValidationError(
          "--planes", "there is no plane '" + name + "'; the planes are " + plane_names());
    }
  }
  if (options.planes.empty() && !options.mean) {
    throw CLI::ValidationError("--planes", "the list is empty; name a plane");
  }
}

/// The names of all kinds of pictures, as a sentence lists them.
std::string picture_names() {
  std::string names;
  for (const PictureTraits& traits : kPictureKinds) {
    if (!names.empty()) names += ", ";
    names += traits.name;
  }
  return names;
}

std::vector<PictureKind> parse_pictures(const std::string& list) {
  std::vector<PictureKind> kinds;
  for (const std::string& name : split_list(list)) {
    const auto kind = picture_kind_named(name);
    if (!kind) {
      throw CLI::ValidationError(
          "--pictures", "there is no picture '" + name + "'; the pictures are " + picture_names());
    }
    if (std::find(kinds.begin(), kinds.end(), *kind) == kinds.end()) kinds.push_back(*kind);
  }
  if (kinds.empty()) throw CLI::ValidationError("--pictures", "the list is empty; name a picture");
  return kinds;
}

/// Names of the formats that planes are written in: those that record the planes' shape.
std::vector<std::string> plane_formats() {
  std::vector<std::string> names;
  for (const ImageFormatTraits& traits : image_formats()) {
    if (traits.has_header && traits.writes(ImageKind::grey)) names.emplace_back(traits.name);
  }
  return names;
}

/// The table of formats, as far as this build has them.
std::string format_table() {
  std::string table = "Formats of frames and results:\n";
  for (const ImageFormatTraits& traits : image_formats()) {
    const std::string_view text = traits.available() ? traits.summary : traits.missing;
    table += "  " + std::string(traits.name) + std::string(6 - traits.name.size(), ' ') +
             std::string(text) + "\n";
  }
  return table + "Headerless frames need --width, --height and --raw-format.\n\n";
}

/// Accepted before and after the name of the command, as it concerns the run and not the frames.
void add_log_level(CLI::App& app, std::optional<int>& level) {
  app.add_option("--log", level,
                 "Show log lines of the processing library up to this severity: 2 errors, 7 also "
                 "the duration of each of its calls")
      ->type_name("LEVEL")
      ->check(CLI::Range(0, 7));
}

class TransformCommand : public Command {
 public:
  explicit TransformCommand(CLI::App& app)
      : Command(*app.add_subcommand("transform", "Write planes and pictures of raw frames")),
        command_(options()),
        mosaic_(command_),
        raw_shape_(command_) {
    command_.footer(format_table() + kResults);
    command_.add_option("FRAME", options_.files, "Raw mosaic frames")
        ->type_name("FILE")
        ->required();
    command_.add_option("-o,--output", options_.folder, "Folder for the results; made if missing")
        ->type_name("FOLDER")
        ->required();
    add_bit_depth(command_, options_.bit_depth);
    command_
        .add_option("--calibration", options_.calibration,
                    "Correct the frames by what kv-polarize calibrate found of their camera")
        ->type_name("FILE");
    command_.add_option("--output-max", options_.output_max, "Full scale of the 16-bit planes")
        ->type_name("N")
        ->check(CLI::Range(1, 65535))
        ->capture_default_str();
    command_
        .add_option_function<std::string>(
            "--planes", [this](const std::string& list) { parse_planes(list, options_); },
            "Planes to write, of " + plane_names() + " (default: all but mean)")
        ->type_name("LIST");
    format_name_ = traits_of(preferred_format(ImageKind::grey)).name;
    command_.add_option("--format", format_name_, "File format of the 16-bit planes")
        ->type_name("NAME")
        ->check(CLI::IsMember(plane_formats()))
        ->capture_default_str();
    command_
        .add_option_function<std::string>(
            "--pictures",
            [this](const std::string& list) { options_.pictures = parse_pictures(list); },
            "Pictures to write, of " + picture_names() + " (default: intensity,dolp,angle)")
        ->type_name("LIST");
    command_.add_flag("--no-pictures", no_pictures_, "Write no pictures");
    command_
        .add_option("--dolp-white", options_.dolp_white,
                    "DoLP that pictures show at full brightness (default: what one pixel in 100 "
                    "of the frame exceeds, rounded up to a multiple of 0.05)")
        ->type_name("N")
        ->check(CLI::Range(0.01, 1.0));
    add_log_level(app, options_.log_level);
    add_log_level(command_, options_.log_level);
  }

  int run() override {
    options_.mosaic = mosaic_.value();
    options_.mosaic_given = mosaic_.given();
    options_.raw_shape = raw_shape_.value();
    options_.format = format_named(format_name_).value();
    if (no_pictures_) options_.pictures.clear();
    return run_transform(options_);
  }

 private:
  CLI::App& command_;
  MosaicOptions mosaic_;
  RawShapeOptions raw_shape_;
  TransformOptions options_;
  std::string format_name_;
  bool no_pictures_ = false;
};

}  // namespace

std::unique_ptr<Command> make_transform_command(CLI::App& app) {
  return std::make_unique<TransformCommand>(app);
}

}  // namespace kv::polarization

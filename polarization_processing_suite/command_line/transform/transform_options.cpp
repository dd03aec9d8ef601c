#include <algorithm>

#include "command_line/command.h"
#include "command_line/options/common_options.h"
#include "command_line/options/values.h"
#include "command_line/transform/transform_command.h"

namespace kv::polarization {
namespace {

std::vector<std::string> plane_names() {
  std::vector<std::string> names;
  for (const PlaneTraits& traits : kPlanes) names.emplace_back(traits.name);
  names.emplace_back("mean");
  return names;
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
      throw BadValue("there is no plane '" + name + "'; the planes are " +
                     comma_list(plane_names()));
    }
  }
  if (options.planes.empty() && !options.mean) {
    throw BadValue("the list is empty; name a plane");
  }
}

std::vector<std::string> picture_names() {
  std::vector<std::string> names;
  for (const PictureTraits& traits : kPictureKinds) names.emplace_back(traits.name);
  return names;
}

std::vector<PictureKind> parse_pictures(const std::string& list) {
  std::vector<PictureKind> kinds;
  for (const std::string& name : split_list(list)) {
    const auto kind = picture_kind_named(name);
    if (!kind) {
      throw BadValue("there is no picture '" + name + "'; the pictures are " +
                     comma_list(picture_names()));
    }
    if (std::find(kinds.begin(), kinds.end(), *kind) == kinds.end()) kinds.push_back(*kind);
  }
  if (kinds.empty()) throw BadValue("the list is empty; name a picture");
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

/// Also by an ending, such as tif.
ImageFormat plane_format_named(const std::string& name) {
  const auto format = format_named(name);
  const auto names = plane_formats();
  return format_named(choice_of(format ? std::string(traits_of(*format).name) : name, names))
      .value();
}

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
                   "kv-polarize transform night/*.tif -o planes --phase 90 --calibration "
                   "camera.json"}};
}

class TransformCommand : public Command {
 public:
  explicit TransformCommand(CLI::App& app) : Command(app, transform_page()) {
    options().add_arguments({.names = "FRAME",
                             .value = "FILE",
                             .summary = "Raw mosaic frames",
                             .required = true,
                             .completion = Completion::file},
                            files_, 1, 1 << 30);
    options().add({.names = "-o,--output",
                   .value = "FOLDER",
                   .summary = "Folder for the results; made if missing",
                   .required = true,
                   .completion = Completion::folder},
                  path_into(options_.folder));
    add_bit_depth(options(), options_.bit_depth);
    options().add(
        {.names = "--calibration",
         .value = "FILE",
         .summary = "Correct the frames by what kv-polarize calibrate found of their camera",
         .completion = Completion::file},
        path_into(options_.calibration), [this] { options_.calibration.reset(); });
    add_planes();
    add_pictures();
    options().add({.names = "--log",
                   .value = "LEVEL",
                   .summary = "Show log lines of the processing library up to this severity",
                   .details = "2: errors; 7: also the duration of each of its calls."},
                  whole_number_into(options_.log_level, 0, 7),
                  [this] { options_.log_level.reset(); });
  }

  int run() override {
    options_.files.assign(files_.begin(), files_.end());
    options_.mosaic = mosaic_.value();
    options_.mosaic_given = mosaic_.given();
    options_.raw_shape = raw_shape_.value();
    return run_transform(options_);
  }

 private:
  void add_planes() {
    options().add({.names = "--planes",
                   .value = "LIST",
                   .summary = "Planes to write, of",
                   .choices = plane_names(),
                   .initial = "all but mean"},
                  [this](const std::string& list) { parse_planes(list, options_); });
    options().add({.names = "--output-max",
                   .value = "N",
                   .summary = "Full scale of the 16-bit planes",
                   .initial = "65535"},
                  whole_number_into(options_.output_max, 1, 65535));
    options_.format = preferred_format(ImageKind::grey);
    options().add({.names = "--format",
                   .value = "NAME",
                   .summary = "File format of the 16-bit planes",
                   .choices = plane_formats(),
                   .initial = std::string(traits_of(options_.format).name)},
                  [this](const std::string& name) { options_.format = plane_format_named(name); });
  }

  void add_pictures() {
    options().add(
        {.names = "--pictures",
         .value = "LIST",
         .summary = "Pictures to write, of",
         .choices = picture_names(),
         .initial = "intensity,dolp,angle"},
        [this](const std::string& list) { options_.pictures = parse_pictures(list); },
        [this] { options_.pictures.clear(); });
    options().add(
        {.names = "--dolp-white",
         .value = "N",
         .summary = "DoLP that pictures show at full brightness",
         .initial = "what one pixel in 100 of the frame exceeds, rounded up to a multiple "
                    "of 0.05"},
        number_into(options_.dolp_white, 0.01, 1), [this] { options_.dolp_white.reset(); });
  }

  MosaicOptions mosaic_{options()};
  RawShapeOptions raw_shape_{options()};
  TransformOptions options_;
  std::vector<std::string> files_;
};

}  // namespace

std::unique_ptr<Command> make_transform_command(CLI::App& app) {
  return std::make_unique<TransformCommand>(app);
}

}  // namespace kv::polarization

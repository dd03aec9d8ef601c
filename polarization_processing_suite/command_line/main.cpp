#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <sstream>
#include <string>

#include "command_line/exit_status.h"
#include "command_line/simulate_command.h"
#include "command_line/transform_command.h"
#include "kv/polarization/fault.h"
#include "platform/process.h"

using namespace kv::polarization;

namespace {

constexpr const char* kDescription =
    "Turns raw frames of polarization cameras into Stokes, angle and degree-of-polarization "
    "planes.";

constexpr const char* kFooter =
    "Examples:\n"
    "  kv-polarize simulate -o frame.png\n"
    "  kv-polarize transform frame.png -o planes\n"
    "  kv-polarize transform night/*.tif -o planes --phase 90 --planes azimuth,dolp --no-pictures\n"
    "  kv-polarize transform dump.raw -o planes --width 2448 --height 2048 --raw-bits 16\n"
    "\n"
    "Exit status: 0 all went well; 1 a frame or the whole work failed; 2 the command line is "
    "wrong;\n"
    "130 stopped by Ctrl-C.";

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

/// The items of a comma list.
std::vector<std::string> split_list(const std::string& list) {
  std::vector<std::string> items;
  std::istringstream stream(list);
  for (std::string item; std::getline(stream, item, ',');) items.push_back(item);
  return items;
}

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

void parse_origin(const std::string& text, Mosaic& mosaic) {
  std::istringstream stream(text);
  char comma = 0;
  stream >> mosaic.x_origin >> comma >> mosaic.y_origin;
  if (!stream || comma != ',' || stream.peek() != std::istringstream::traits_type::eof() ||
      mosaic.x_origin < 0 || mosaic.y_origin < 0) {
    throw CLI::ValidationError(
        "--origin", "'" + text + "' is not a column and a row from 0 up; write, for example, 0,1");
  }
}

/// Names of the formats that planes are written in: those that record the planes' shape.
std::vector<std::string> plane_formats() {
  std::vector<std::string> names;
  for (const ImageFormatTraits& traits : image_formats()) {
    if (traits.has_header && traits.writes(ImageKind::grey)) names.emplace_back(traits.name);
  }
  return names;
}

std::string writable_endings() {
  std::string endings;
  for (const ImageFormatTraits& traits : image_formats()) {
    if (!traits.available()) continue;
    if (!endings.empty()) endings += ", ";
    endings += ending_of(traits.format);
  }
  return endings;
}

std::vector<std::string> pixel_formats() {
  std::vector<std::string> names;
  for (const PixelFormatTraits& traits : kPixelFormats) names.emplace_back(traits.name);
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

CLI::Option* add_phase(CLI::App& command, int& degrees) {
  return command
      .add_option("--phase", degrees, "Polarizer behind the sensor's first pixel, in degrees")
      ->type_name("DEGREES")
      ->check(CLI::IsMember({0, 45, 90, 135}))
      ->capture_default_str();
}

/// Accepted before and after the name of the command, as it concerns the run and not the frames.
void add_log_level(CLI::App& app, std::optional<int>& level) {
  app.add_option("--log", level,
                 "Show log lines of the processing library up to this severity: 2 errors, 7 also "
                 "the duration of each of its calls")
      ->type_name("LEVEL")
      ->check(CLI::Range(0, 7));
}

const CLI::Range kSides(2, 1 << 20);

/// The transform command's options as they come from the command line.
class TransformCommand {
 public:
  explicit TransformCommand(CLI::App& app)
      : command_(*app.add_subcommand("transform", "Write planes and pictures of raw frames")) {
    command_.footer(format_table() + kResults);
    command_.add_option("FRAME", options_.files, "Raw mosaic frames")
        ->type_name("FILE")
        ->required();
    command_.add_option("-o,--output", options_.folder, "Folder for the results; made if missing")
        ->type_name("FOLDER")
        ->required();
    add_phase(command_, phase_degrees_);
    command_
        .add_option_function<std::string>(
            "--origin", [this](const std::string& text) { parse_origin(text, options_.mosaic); },
            "Column and row of the frame's first pixel on the sensor (default 0,0)")
        ->type_name("X,Y");
    command_
        .add_option("--bit-depth", options_.bit_depth,
                    "Significant bits of a sample (default: those of a PGM's maxval or a TIFF's "
                    "maximum sample value, else the 8 or 16 stored ones)")
        ->type_name("N")
        ->check(CLI::Range(1, 16));
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
    add_raw_shape();
    add_log_level(app, options_.log_level);
    add_log_level(command_, options_.log_level);
  }

  bool chosen() const { return command_.parsed(); }

  int run() {
    options_.mosaic.phase = phase_at(phase_degrees_).value();
    options_.format = format_named(format_name_).value();
    if (no_pictures_) options_.pictures.clear();
    if (raw_bits_ != 0)
      raw_.pixel_format = raw_bits_ == 8 ? PixelFormat::mono8 : PixelFormat::mono16;
    if (!raw_format_.empty()) raw_.pixel_format = pixel_format_named(raw_format_).value();
    if (raw_.width != 0) options_.raw_shape = raw_;
    return run_transform(options_);
  }

 private:
  void add_raw_shape() {
    CLI::Option* width = command_.add_option("--width", raw_.width, "Columns of headerless frames")
                             ->type_name("N")
                             ->check(kSides);
    CLI::Option* height = command_.add_option("--height", raw_.height, "Rows of headerless frames")
                              ->type_name("N")
                              ->check(kSides);
    CLI::Option* format =
        command_.add_option("--raw-format", raw_format_, "Pixel format of headerless frames")
            ->type_name("NAME")
            ->check(CLI::IsMember(pixel_formats()));
    CLI::Option* bits =
        command_.add_option("--raw-bits", raw_bits_, "In its place: 8 for Mono8, 16 for Mono16")
            ->type_name("N")
            ->check(CLI::IsMember({8, 16}))
            ->excludes(format);
    width->needs(height);
    height->needs(width);
    for (CLI::Option* option : {format, bits}) option->needs(width)->needs(height);
    command_.final_callback([=] {
      if (width->count() > 0 && format->count() + bits->count() == 0) {
        throw CLI::RequiresError("--width", "--raw-format or --raw-bits");
      }
    });
  }

  CLI::App& command_;
  TransformOptions options_;
  int phase_degrees_ = 0;
  std::string format_name_;
  bool no_pictures_ = false;
  RawShape raw_{};
  std::string raw_format_;
  int raw_bits_ = 0;
};

class SimulateCommand {
 public:
  explicit SimulateCommand(CLI::App& app)
      : command_(*app.add_subcommand("simulate", "Write a raw frame of a synthetic scene")) {
    command_.footer(
        "The scene: a glossy sphere on rippled water under a clear sky, its light traced by\n"
        "Fresnel's equations, and four film discs at 0, 45, 90 and 135 degrees, left to right, "
        "with\n"
        "DoLP 0.9, 0.8, 0.7 and 0.6.");
    command_
        .add_option("-o,--output", options_.file,
                    "The file to write; its ending decides on the format: " + writable_endings())
        ->type_name("FILE")
        ->required();
    command_.add_option("--width", options_.width, "Columns")
        ->type_name("N")
        ->check(kSides)
        ->capture_default_str();
    command_.add_option("--height", options_.height, "Rows")
        ->type_name("N")
        ->check(kSides)
        ->capture_default_str();
    command_.add_option("--bit-depth", options_.camera.bit_depth, "Significant bits of a sample")
        ->type_name("N")
        ->check(CLI::Range(1, 16))
        ->capture_default_str();
    add_phase(command_, options_.phase_degrees);
    command_.add_option("--seed", options_.camera.seed, "Start of the noise")
        ->type_name("N")
        ->capture_default_str();
    command_.add_flag("--noise,!--no-noise", options_.camera.noise,
                      "With shot noise and read noise (default), or without");
  }

  bool chosen() const { return command_.parsed(); }

  int run() {
    options_.camera.phase = phase_at(options_.phase_degrees).value();
    return run_simulate(options_);
  }

 private:
  CLI::App& command_;
  SimulateOptions options_;
};

int complain(const std::string& line, int status) {
  std::cerr << "kv-polarize: " << line << std::endl;
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  kv::platform::defer_interrupts();
  kv::platform::ignore_file_size_signal();
  try {
    CLI::App app(kDescription, "kv-polarize");
    app.footer(kFooter);
    app.set_version_flag("--version", "kv-polarize " KV_VERSION);
    app.require_subcommand(1);
    TransformCommand transform(app);
    SimulateCommand simulate(app);
    try {
      app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
      if (error.get_exit_code() == 0) return app.exit(error);
      return complain(std::string(error.what()) + "; see kv-polarize --help", exit_usage);
    }
    return transform.chosen() ? transform.run() : simulate.run();
  } catch (const std::bad_alloc&) {
    return complain("there is not enough memory; close other programs or use a smaller frame",
                    exit_failure);
  } catch (const std::exception& error) {
    return complain(error.what(), exit_failure);
  }
}

#include "command_line/common_options.h"

#include <sstream>

#include "kv/image_files/pixel_format.h"

namespace kv::polarization {
namespace {

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

std::vector<std::string> pixel_formats() {
  std::vector<std::string> names;
  names.reserve(kPixelFormats.size());
  for (const PixelFormatTraits& traits : kPixelFormats) names.emplace_back(traits.name);
  return names;
}

}  // namespace

const CLI::Range kSides(2, 1 << 20);

std::vector<std::string> split_list(const std::string& list) {
  std::vector<std::string> items;
  std::istringstream stream(list);
  for (std::string item; std::getline(stream, item, ',');) items.push_back(item);
  return items;
}

CLI::Option* add_phase(CLI::App& command, int& degrees) {
  return command
      .add_option("--phase", degrees, "Polarizer behind the sensor's first pixel, in degrees")
      ->type_name("DEGREES")
      ->check(CLI::IsMember({0, 45, 90, 135}))
      ->capture_default_str();
}

void add_bit_depth(CLI::App& command, std::optional<int>& bit_depth) {
  command
      .add_option("--bit-depth", bit_depth,
                  "Significant bits of a sample (default: those of a PGM's maxval or a TIFF's "
                  "maximum sample value, else the 8 or 16 stored ones)")
      ->type_name("N")
      ->check(CLI::Range(1, 16));
}

MosaicOptions::MosaicOptions(CLI::App& command)
    : phase_(add_phase(command, phase_degrees_)),
      origin_(command.add_option_function<std::string>(
          "--origin", [this](const std::string& text) { parse_origin(text, mosaic_); },
          "Column and row of the frame's first pixel on the sensor (default 0,0)")) {
  origin_->type_name("X,Y");
}

Mosaic MosaicOptions::value() const {
  Mosaic mosaic = mosaic_;
  mosaic.phase = phase_at(phase_degrees_).value();
  return mosaic;
}

RawShapeOptions::RawShapeOptions(CLI::App& command) {
  CLI::Option* width = command.add_option("--width", shape_.width, "Columns of headerless frames")
                           ->type_name("N")
                           ->check(kSides);
  CLI::Option* height = command.add_option("--height", shape_.height, "Rows of headerless frames")
                            ->type_name("N")
                            ->check(kSides);
  CLI::Option* format =
      command.add_option("--raw-format", format_, "Pixel format of headerless frames")
          ->type_name("NAME")
          ->check(CLI::IsMember(pixel_formats()));
  CLI::Option* bits =
      command.add_option("--raw-bits", bits_, "In its place: 8 for Mono8, 16 for Mono16")
          ->type_name("N")
          ->check(CLI::IsMember({8, 16}))
          ->excludes(format);
  width->needs(height);
  height->needs(width);
  for (CLI::Option* option : {format, bits}) option->needs(width)->needs(height);
  command.final_callback([=] {
    if (width->count() > 0 && format->count() + bits->count() == 0) {
      throw CLI::RequiresError("--width", "--raw-format or --raw-bits");
    }
  });
}

std::optional<RawShape> RawShapeOptions::value() const {
  if (shape_.width == 0) return std::nullopt;
  RawShape shape = shape_;
  if (bits_ != 0) shape.pixel_format = bits_ == 8 ? PixelFormat::mono8 : PixelFormat::mono16;
  if (!format_.empty()) shape.pixel_format = pixel_format_named(format_).value();
  return shape;
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/options/common_options.h"

#include "command_line/options/values.h"
#include "kv/image_files/pixel_format.h"
#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

void parse_origin(const std::string& text, Mosaic& mosaic) {
  const auto numbers = split_list(text);
  if (numbers.size() != 2) {
    throw BadValue("'" + text + "' is not a column and a row from 0 up; write, for example, 0,1");
  }
  mosaic.x_origin = static_cast<int>(whole_number_of(numbers[0], 0, kLongestSide));
  mosaic.y_origin = static_cast<int>(whole_number_of(numbers[1], 0, kLongestSide));
}

std::vector<std::string> pixel_formats() {
  std::vector<std::string> names;
  names.reserve(kPixelFormats.size());
  for (const PixelFormatTraits& traits : kPixelFormats) names.emplace_back(traits.name);
  return names;
}

template <class Open>
std::unique_ptr<FrameReader> with_hint(const std::filesystem::path& file, Open open) {
  try {
    return open();
  } catch (const Fault& fault) {
    if (fault.kind() != FaultKind::unsupported || format_of_content(file)) throw;
    throw Fault(fault.kind(), std::string(fault.what()) +
                                  ": by --width, --height and --raw-format or --raw-bits");
  }
}

}  // namespace

void add_phase(OptionList& options, int& degrees) {
  options.add(
      {.names = "--phase",
       .value = "DEGREES",
       .summary = "Polarizer behind the sensor's first pixel",
       .details = "Angle of the linear polarizer before the top left pixel of the sensor, 0 "
                  "along the rows and counter-clockwise as seen in the image. The command "
                  "identify finds it.",
       .choices = {"0", "45", "90", "135"},
       .initial = "0"},
      [&degrees](const std::string& text) {
        const long long number = whole_number_of(text, 0, 135);
        choice_of(std::to_string(number), {"0", "45", "90", "135"});
        degrees = static_cast<int>(number);
      });
}

void add_bit_depth(OptionList& options, std::optional<int>& bit_depth) {
  options.add({.names = "--bit-depth",
               .value = "N",
               .summary = "Significant bits of a sample, 1 to 16",
               .details = "Without it they are those of a PGM's maxval, a TIFF's maximum sample "
                          "value or a raw pixel format, else the 8 or 16 stored ones."},
              whole_number_into(bit_depth, 1, 16), [&bit_depth] { bit_depth.reset(); });
}

MosaicOptions::MosaicOptions(OptionList& options) : options_(options) {
  add_phase(options, phase_degrees_);
  options.add({.names = "--origin",
               .value = "X,Y",
               .summary = "Column and row of the frame's first pixel on the sensor",
               .details = "For frames of a region of the sensor, whose cells begin where the "
                          "sensor's do.",
               .initial = "0,0"},
              [this](const std::string& text) { parse_origin(text, mosaic_); });
}

Mosaic MosaicOptions::value() const {
  Mosaic mosaic = mosaic_;
  mosaic.phase = phase_at(phase_degrees_).value();
  return mosaic;
}

RawShapeOptions::RawShapeOptions(OptionList& options) : options_(options) {
  options.add({.names = "--width", .value = "N", .summary = "Columns of headerless frames"},
              whole_number_into(shape_.width, 2, kLongestSide));
  options.add({.names = "--height", .value = "N", .summary = "Rows of headerless frames"},
              whole_number_into(shape_.height, 2, kLongestSide));
  options.add(
      {.names = "--raw-format",
       .value = "NAME",
       .summary = "Pixel format of headerless frames",
       .details = "Samples as GenICam names their packings; Left are the high bits of 16-bit "
                  "words. Frames lie one behind the other without gaps.",
       .choices = pixel_formats()},
      [this](const std::string& text) {
        shape_.pixel_format = pixel_format_named(choice_of(text, pixel_formats())).value();
      });
  options.add({.names = "--raw-bits",
               .value = "N",
               .summary = "In place of --raw-format, for Mono8 and Mono16",
               .choices = {"8", "16"}},
              [this](const std::string& text) {
                const bool bytes = choice_of(text, {"8", "16"}) == "8";
                shape_.pixel_format = bytes ? PixelFormat::mono8 : PixelFormat::mono16;
              });
}

std::optional<RawShape> RawShapeOptions::value() const {
  const bool width = options_.given("width");
  const bool height = options_.given("height");
  const bool format = options_.given("raw-format");
  const bool bits = options_.given("raw-bits");
  if (format && bits) throw UsageError("--raw-format excludes --raw-bits; give one of them");
  if (!(width || height || format || bits)) return std::nullopt;
  if (!width || !height || !(format || bits)) {
    throw UsageError(
        "headerless frames need all of --width, --height and --raw-format or --raw-bits; some "
        "of them are missing");
  }
  return shape_;
}

Rectangle rectangle_of(const std::string& text) {
  const auto numbers = split_list(text);
  if (numbers.size() != 4) {
    throw BadValue("'" + text +
                   "' is not a column, a row, a width and a height; write, for example, "
                   "100,80,64,64");
  }
  const auto number = [&numbers](std::size_t index, int least) {
    return static_cast<int>(whole_number_of(numbers[index], least, kLongestSide));
  };
  return {number(0, 0), number(1, 0), number(2, 1), number(3, 1)};
}

std::unique_ptr<FrameReader> open_frames_of_user(const std::filesystem::path& file,
                                                 const std::optional<RawShape>& raw_shape) {
  return with_hint(file, [&] { return open_frames(file, raw_shape); });
}

std::unique_ptr<FrameReader> open_frames_of_user(std::span<const std::byte> content,
                                                 const std::filesystem::path& file,
                                                 const std::optional<RawShape>& raw_shape) {
  return with_hint(file, [&] { return open_frames(content, raw_shape); });
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/format_table.h"

#include <vector>

#include "toolkit/image_files/formats/formats.h"

namespace kv::polarization {
namespace {

using namespace std::string_view_literals;

/// A row of the one table that all opening, writing and naming goes by.
struct Row {
  ImageFormatTraits traits;
  std::vector<std::string_view> starts;  ///< what a file may begin with that holds frames
  FormatFunctions functions;
};

Row complete(Row row) {
  const FormatFunctions& functions = row.functions;
  row.traits.reads = functions.open != nullptr || row.traits.format == ImageFormat::raw;
  row.traits.writes_kinds = {functions.write_grey != nullptr, functions.write_floats != nullptr,
                             functions.write_picture != nullptr};
  row.traits.stacks = functions.open_stack != nullptr;
  row.traits.keeps_text = functions.provenance != nullptr;
  row.traits.missing = functions.missing;
  return row;
}

ImageFormatTraits described(ImageFormat format, std::string_view name,
                            std::array<std::string_view, 3> endings,
                            std::string_view picture_ending, std::string_view summary) {
  const bool has_header = format != ImageFormat::raw;
  return {format, name, endings, picture_ending, summary, has_header, false, {}, false, false, {}};
}

const std::vector<Row>& table() {
  static const std::vector<Row> rows = {
      complete({described(ImageFormat::png, "png", {".png"}, ".png",
                          "grey PNG of 8 or 16 bits; pictures"),
                {"\x89PNG\r\n\x1A\n"sv},
                png_functions()}),
      complete({described(ImageFormat::tiff, "tiff", {".tiff", ".tif"}, ".tiff",
                          "grey TIFF or BigTIFF of 8 or 16 bits, every page a frame; floats; "
                          "pictures"),
                {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv},
                tiff_functions()}),
      complete({described(ImageFormat::pgm, "pgm", {".pgm", ".pnm"}, ".pnm",
                          "binary PGM (P5), one or several images; pictures as P5 or P6"),
                {"P5"sv},
                pgm_functions()}),
      complete({described(ImageFormat::npy, "npy", {".npy"}, ".npy",
                          "NumPy arrays of 8 or 16 bits, rows x columns or frames x rows x "
                          "columns; floats and pictures, rows x columns x channels"),
                {"\x93NUMPY"sv},
                npy_functions()}),
      complete({described(ImageFormat::raw, "raw", {".raw"}, ".raw",
                          "headerless frames in the pixel formats of cameras; planes of 8 or 16 "
                          "bits, floats"),
                {},
                raw_functions()}),
  };
  return rows;
}

}  // namespace

std::span<const ImageFormatTraits> image_formats() {
  static const std::vector<ImageFormatTraits> traits = [] {
    std::vector<ImageFormatTraits> all;
    for (const Row& row : table()) all.push_back(row.traits);
    return all;
  }();
  return traits;
}

const FormatFunctions& functions_of(ImageFormat format) {
  return table()[static_cast<std::size_t>(format)].functions;
}

std::string first_bytes(ByteSource& source) {
  std::string bytes(8, '\0');
  bytes.resize(source.read(0, bytes.data(), bytes.size()));
  return bytes;
}

std::optional<ImageFormat> format_of_start(std::string_view bytes) {
  for (const Row& row : table()) {
    for (const std::string_view start : row.starts) {
      if (bytes.starts_with(start)) return row.traits.format;
    }
  }
  return std::nullopt;
}

std::optional<ImageFormat> format_of_image_start(std::string_view bytes) {
  return bytes.starts_with("P6") ? ImageFormat::pgm : format_of_start(bytes);
}

}  // namespace kv::polarization

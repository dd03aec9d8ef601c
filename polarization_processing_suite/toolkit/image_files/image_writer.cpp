#include "toolkit/image_files/image_writer.h"

#include <algorithm>
#include <cctype>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/pgm_file.h"
#include "toolkit/image_files/png_file.h"
#include "toolkit/image_files/raw_file.h"
#include "toolkit/image_files/tiff_file.h"

namespace kv::polarization {
namespace {

bool is_available(ImageFormat format) {
  return (format != ImageFormat::png || png_available()) &&
         (format != ImageFormat::tiff || tiff_available());
}

}  // namespace

std::vector<std::string> plane_format_names() {
  std::vector<std::string> names;
  if (png_available()) names.emplace_back("png");
  if (tiff_available()) names.emplace_back("tiff");
  names.emplace_back("pgm");
  return names;
}

std::optional<ImageFormat> format_named(std::string_view name) {
  if (name == "png") return ImageFormat::png;
  if (name == "tiff" || name == "tif") return ImageFormat::tiff;
  if (name == "pgm") return ImageFormat::pgm;
  if (name == "raw") return ImageFormat::raw;
  return std::nullopt;
}

ImageFormat format_for(const std::filesystem::path& path) {
  std::string name = path.extension().string();
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  const std::optional<ImageFormat> format =
      name.empty() ? std::nullopt : format_named(std::string_view(name).substr(1));
  if (!format || !is_available(*format)) {
    std::string known;
    for (const std::string& known_name : plane_format_names()) known += "." + known_name + ", ";
    throw Fault(FaultKind::file, "the name " + path.filename().string() +
                                     " does not say which format to write; it must end in one of " +
                                     known + ".raw");
  }
  return *format;
}

std::string extension_of(ImageFormat format) {
  switch (format) {
    case ImageFormat::png:
      return ".png";
    case ImageFormat::tiff:
      return ".tiff";
    case ImageFormat::pgm:
      return ".pgm";
    case ImageFormat::raw:
      break;
  }
  return ".raw";
}

void write_grey(PendingFile& file, ImageFormat format, const GreyImage& image) {
  switch (format) {
    case ImageFormat::png:
      return write_png(file, image);
    case ImageFormat::tiff:
      return write_tiff(file, image);
    case ImageFormat::pgm:
      return write_pgm(file, image);
    case ImageFormat::raw:
      return write_raw(file, image);
  }
}

void write_float_pairs(PendingFile& file, int width, int height, std::span<const float> pairs) {
  if (tiff_available()) {
    write_tiff(file, width, height, pairs);
  } else {
    file.write(pairs.data(), pairs.size_bytes());
  }
}

std::string float_pairs_extension() { return tiff_available() ? ".tiff" : ".f32"; }

void write_picture(PendingFile& file, const Picture& picture) {
  if (png_available()) {
    write_png(file, picture);
  } else {
    write_netpbm(file, picture);
  }
}

std::string picture_extension() { return png_available() ? ".png" : ".pnm"; }

}  // namespace kv::polarization

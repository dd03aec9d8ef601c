#include "toolkit/image_files/frame_reader.h"

#include <array>
#include <string>
#include <string_view>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/input_file.h"
#include "toolkit/image_files/pgm_file.h"
#include "toolkit/image_files/png_file.h"
#include "toolkit/image_files/raw_file.h"
#include "toolkit/image_files/tiff_file.h"

namespace kv::polarization {
namespace {

std::string first_bytes(InputFile& file) {
  std::string bytes(8, '\0');
  bytes.resize(file.read(bytes.data(), bytes.size()));
  file.seek(0);
  return bytes;
}

bool starts_with_tiff_signature(std::string_view bytes) {
  using namespace std::string_view_literals;
  for (const std::string_view signature : {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv}) {
    if (bytes.starts_with(signature)) return true;
  }
  return false;
}

bool is_other_netpbm(std::string_view bytes) {
  return bytes.size() >= 2 && bytes[0] == 'P' && bytes[1] >= '1' && bytes[1] <= '7';
}

}  // namespace

std::unique_ptr<FrameReader> open_frames(const std::filesystem::path& path,
                                         const std::optional<RawShape>& raw_shape) {
  InputFile file(path);
  if (raw_shape) return open_raw(std::move(file), *raw_shape);

  const std::string bytes = first_bytes(file);
  if (bytes.starts_with("\x89PNG")) return open_png(std::move(file));
  if (starts_with_tiff_signature(bytes)) return open_tiff(std::move(file));
  if (bytes.starts_with("P5")) return open_pgm(std::move(file));
  if (is_other_netpbm(bytes)) {
    throw Fault(FaultKind::file, "this is a netpbm image of kind " + bytes.substr(0, 2) +
                                     "; a frame must be binary grey, P5");
  }
  throw Fault(
      FaultKind::file,
      "the content is neither PNG, TIFF nor PGM; a headerless file needs --width, --height and "
      "--raw-bits");
}

}  // namespace kv::polarization

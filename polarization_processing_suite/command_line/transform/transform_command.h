#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include "kv/image_files/frame_reader.h"
#include "kv/image_files/image_writer.h"
#include "kv/pictures/picture_kinds.h"
#include "kv/polarization/processor.h"

namespace kv::polarization {

struct TransformOptions {
  std::vector<std::filesystem::path> files;
  std::filesystem::path folder;
  Mosaic mosaic;
  OutputSet planes = OutputSet::all();  ///< to write
  bool mean = false;                    ///< writes the mean of the four samples too
  std::uint16_t output_max = 65535;
  std::optional<int> bit_depth;  ///< instead of the files' own
  std::optional<RawShape> raw_shape;
  std::optional<std::filesystem::path> calibration;
  bool mosaic_given = false;  ///< else a calibration tells it
  ImageFormat format = ImageFormat::pgm;
  std::vector<PictureKind> pictures = {PictureKind::intensity, PictureKind::dolp,
                                       PictureKind::angle};
  std::optional<double> dolp_white;  ///< none for the frame's own
  std::optional<int> log_level;      ///< severity up to which the library's log lines are shown
};

/// Transforms all files and reports on the standard streams. Returns an exit status.
int run_transform(const TransformOptions& options);

}  // namespace kv::polarization

#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "toolkit/image_files/frame_reader.h"
#include "toolkit/image_files/image_writer.h"
#include "toolkit/processor.h"

namespace kv {

struct TransformOptions {
  std::vector<std::filesystem::path> files;
  std::filesystem::path folder;
  TransformSettings settings;    ///< with the planes to write
  std::optional<int> bit_depth;  ///< instead of the files' own
  std::optional<RawShape> raw_shape;
  ImageFormat format = ImageFormat::pgm;
  bool pictures = true;
  double dolp_white = 1;
  std::optional<int> log_level;  ///< severity up to which the library's log lines are shown
};

/// Transforms all files and reports on the standard streams. Returns an exit status.
int run_transform(const TransformOptions& options);

}  // namespace kv

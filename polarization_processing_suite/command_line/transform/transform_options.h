// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "command_line/batch/report_options.h"
#include "kv/image_files/frame_reader.h"
#include "kv/image_files/image_writer.h"
#include "kv/pictures/picture_kinds.h"
#include "kv/polarization/mosaic.h"
#include "kv/polarization/planes.h"

namespace kv::polarization {

/// What becomes of frames: all that decides on the bytes of results, beside frames and calibration.
struct Recipe {
  Mosaic mosaic;
  bool mosaic_given = false;     ///< else a calibration tells it
  std::optional<int> bit_depth;  ///< instead of the files' own
  std::optional<RawShape> raw_shape;
  std::optional<std::filesystem::path> calibration;
  OutputSet planes = OutputSet::all();  ///< to write
  bool mean = false;                    ///< writes the mean of the four samples too
  std::uint16_t output_max = 65535;
  ImageFormat format = preferred_format(ImageKind::grey);
  std::optional<Compression> compression;
  std::vector<PictureKind> pictures = {PictureKind::intensity, PictureKind::dolp,
                                       PictureKind::angle};
  std::optional<double> dolp_white;  ///< none for the frame's own
};

/// The names of Compression and Stacking, in their orders.
inline constexpr std::array<const char*, 3> kCompressionNames = {"none", "fast", "small"};
inline constexpr std::array<const char*, 3> kStackingNames = {"none", "planes", "inputs"};

/// Which images share a file.
enum class Stacking : std::uint8_t {
  none,    ///< none
  planes,  ///< the pages of an input, for each plane
  inputs   ///< all planes of all pages of an input
};

/// What is done with a result that is there already.
enum class Existing : std::uint8_t { refuse, overwrite, resume };

struct InputOptions {
  std::vector<std::string> words;
  bool recursive = false;
  std::vector<std::string> skip;
  std::vector<std::size_t> pages;  ///< from 1 up, of every input; all if empty
};

struct OutputOptions {
  std::string folder;  ///< "-" for standard output
  std::string names;   ///< template; empty for the usual one
  std::optional<Stacking> stacking;
  Existing existing = Existing::refuse;
  bool dry_run = false;

  bool to_standard_output() const { return folder == "-"; }
};

struct TransformOptions {
  InputOptions input;
  Recipe recipe;
  OutputOptions output;
  ReportOptions report;
  int jobs = 0;                  ///< frames at the same time, 0 for one a core
  std::optional<int> log_level;  ///< severity up to which the library's log lines are shown
};

}  // namespace kv::polarization

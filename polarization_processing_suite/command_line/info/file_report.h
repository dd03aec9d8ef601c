// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "command_line/info/frame_facts.h"
#include "command_line/info/shape_guess.h"
#include "kv/image_files/frame_reader.h"
#include "kv/polarization/mosaic.h"

namespace kv::polarization {

/// How the files are to be looked at.
struct FileQuestion {
  std::optional<RawShape> raw_shape{};
  std::optional<int> bit_depth{};  ///< instead of the files' own
  std::optional<Mosaic> mosaic{};  ///< names the classes; none for places in the cell
  std::size_t page = 0;            ///< from 0 up
};

/// What a page of a file tells.
struct PageReport {
  std::size_t page = 0;   ///< from 0 up
  std::size_t pages = 0;  ///< of the file
  int width = 0;
  int height = 0;
  int bit_depth = 0;
  FrameFacts facts{};
};

struct FileReport {
  std::filesystem::path file;
  std::uint64_t bytes = 0;
  std::string format;                 ///< a format's name; empty for headerless files
  std::optional<PageReport> page{};   ///< none for headerless files of unknown shape
  std::vector<ShapeGuess> guesses{};  ///< what these may be, the likeliest first
  std::string provenance{};           ///< what made the file, where it tells
  std::vector<std::string> odd{};     ///< a line each
};

/// Throws Fault for a file that is no frame, and whose size tells no shape either.
FileReport look_at(const std::filesystem::path& file, const FileQuestion& question);

}  // namespace kv::polarization

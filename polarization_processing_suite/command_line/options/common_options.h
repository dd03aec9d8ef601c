// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>

#include "command_line/options/option_list.h"
#include "kv/image_files/frame_reader.h"
#include "kv/polarization/mosaic.h"
#include "kv/polarization/region.h"

namespace kv::polarization {

/// The longest side of a frame, in pixels.
inline constexpr int kLongestSide = 1 << 20;

/// --phase and --origin.
class MosaicOptions {
 public:
  explicit MosaicOptions(OptionList& options);
  Mosaic value() const;

  /// Whether the command line says anything of it.
  bool given() const { return options_.given("phase") || options_.given("origin"); }

 private:
  const OptionList& options_;
  int phase_degrees_ = 0;
  Mosaic mosaic_{};
};

void add_phase(OptionList& options, int& degrees);
void add_bit_depth(OptionList& options, std::optional<int>& bit_depth);

/// --width, --height, --raw-format and --raw-bits.
class RawShapeOptions {
 public:
  explicit RawShapeOptions(OptionList& options);

  /// None when none of the options is given. Throws UsageError when only some are.
  std::optional<RawShape> value() const;

 private:
  const OptionList& options_;
  RawShape shape_{};
};

/// Column, row, width and height, in pixels, from 0 up. Throws BadValue.
Rectangle rectangle_of(const std::string& text);

/// Opens frames; a file of no known format is told which options would describe it. The second form
/// is for its content.
std::unique_ptr<FrameReader> open_frames_of_user(const std::filesystem::path& file,
                                                 const std::optional<RawShape>& raw_shape);
std::unique_ptr<FrameReader> open_frames_of_user(std::span<const std::byte> content,
                                                 const std::filesystem::path& file,
                                                 const std::optional<RawShape>& raw_shape);

}  // namespace kv::polarization

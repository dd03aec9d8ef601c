#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

#include "kv/image_files/frame_reader.h"
#include "kv/polarization/mosaic.h"

namespace kv::polarization {

/// The range of a frame's sides.
extern const CLI::Range kSides;

/// The items of a comma list.
std::vector<std::string> split_list(const std::string& list);

/// --phase and --origin.
class MosaicOptions {
 public:
  explicit MosaicOptions(CLI::App& command);
  Mosaic value() const;

  /// Whether the command line says anything of it.
  bool given() const { return phase_->count() + origin_->count() > 0; }

 private:
  CLI::Option* phase_;
  CLI::Option* origin_;
  int phase_degrees_ = 0;
  Mosaic mosaic_{};
};

CLI::Option* add_phase(CLI::App& command, int& degrees);
void add_bit_depth(CLI::App& command, std::optional<int>& bit_depth);

/// --width, --height, --raw-format and --raw-bits.
class RawShapeOptions {
 public:
  explicit RawShapeOptions(CLI::App& command);
  std::optional<RawShape> value() const;

 private:
  RawShape shape_{};
  std::string format_;
  int bits_ = 0;
};

}  // namespace kv::polarization

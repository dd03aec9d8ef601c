#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>

#include "kv/polarization/frame.h"

namespace kv::polarization {

/// The frames of one file. They are read one at a time, so that a long file needs the memory of one
/// frame.
class FrameReader {
 public:
  virtual ~FrameReader() = default;
  virtual std::size_t count() const = 0;
  virtual Frame read(std::size_t index) = 0;
};

/// The shape of headerless frames: little endian samples, row by row.
struct RawShape {
  int width;
  int height;
  int bits;  ///< of a stored sample, 8 or 16
};

/// Opens a frame file, whose content decides on the format, not its name. With a raw shape the file
/// is taken as headerless, whatever it holds. Throws Fault; the message does not repeat the path.
std::unique_ptr<FrameReader> open_frames(const std::filesystem::path& path,
                                         const std::optional<RawShape>& raw_shape);

}  // namespace kv::polarization

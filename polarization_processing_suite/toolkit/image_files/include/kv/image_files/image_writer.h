// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>

#include "kv/image_files/image_format.h"
#include "kv/image_files/pending_file.h"
#include "kv/polarization/frame.h"
#include "kv/polarization/picture.h"

namespace kv::polarization {

/// One grey channel, row by row without gaps. It is stored in bytes up to 8 bits, and in two bytes
/// above; TIFF and PGM record the bit depth.
struct GreyImage {
  int width;                               ///< pixels
  int height;                              ///< pixels
  int bit_depth;                           ///< significant bits of a sample, 1 to 16
  std::span<const std::uint16_t> samples;  ///< width * height of them
};

/// A view of a frame, which has to outlive it.
inline GreyImage grey_image(const Frame& frame) {
  return {frame.width, frame.height, frame.bit_depth, frame.samples};
}

/// One or more channels of floats, interleaved, row by row without gaps.
struct FloatImage {
  int width;                      ///< pixels
  int height;                     ///< pixels
  int channels;                   ///< 1 or more
  std::span<const float> values;  ///< width * height * channels of them
};

/// How hard a writer tries to make a file small. PNG and TIFF compress, without loss; the other
/// formats leave it out of account.
enum class Compression : std::uint8_t {
  none,  ///< as fast as the disk
  fast,  ///< some 600 MB of samples a second: what noise allows, without a search for repeats
  small  ///< a few per cent smaller, at ten times the time
};

/// What may be said of a file beside its image.
struct WriteOptions {
  /// UTF-8. Kept by PNG and TIFF, and as a comment by PGM; the other formats have no place for it.
  std::string title{};
  /// What made the image, UTF-8 in one line. Kept where the title is; provenance_of() reads it.
  /// For the other formats it belongs into the file at provenance_beside(), which the caller
  /// writes.
  std::string provenance{};
  /// None for what is usual: fast for PNG, none for TIFF, so that all programs read it.
  std::optional<Compression> compression{};
};

/// Writes the whole of an image to a file that its caller closes and publishes.
///
/// Throws Fault: argument when the numbers of samples and sides do not fit, or a sample has more
/// bits than the image claims; unsupported when the format, or this build, does not take that kind;
/// file when writing fails.
void write_image(PendingFile& file, ImageFormat format, const GreyImage& image,
                 const WriteOptions& options = {});
void write_image(PendingFile& file, ImageFormat format, const FloatImage& image,
                 const WriteOptions& options = {});
void write_image(PendingFile& file, ImageFormat format, const Picture& picture,
                 const WriteOptions& options = {});

/// Writes a file in the format of its ending. An earlier file of that name is replaced when all is
/// written, and stays when that fails.
template <class Image>
void save_image(const std::filesystem::path& path, const Image& image,
                const WriteOptions& options = {}) {
  const ImageFormat format = format_for(path);
  PendingFile file(path);
  write_image(file, format, image, options);
  file.close();
  file.publish();
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

#include "kv/polarization/buffer.h"

namespace kv::polarization {

/// What a channel of a pixel is stored in.
enum class ElementType : std::uint8_t { uint8, uint16, float32 };

/// Of one element.
constexpr std::size_t bytes_of(ElementType element) {
  return element == ElementType::uint8 ? 1 : element == ElementType::uint16 ? 2 : 4;
}

/// Any image that the toolkit writes: planes, maps, pictures. Channels are interleaved, rows lie
/// without gaps, from the top down.
struct Image {
  int width = 0;                             ///< pixels
  int height = 0;                            ///< pixels
  int channels = 0;                          ///< 1 or more; 3 of 8 bits may be red, green and blue
  ElementType element = ElementType::uint8;  ///< of each channel
  Buffer<std::uint8_t> bytes;  ///< in the processor's own order; begins at a multiple of 64

  /// width * height * channels.
  std::size_t elements() const { return bytes.size() / bytes_of(element); }

  /// The elements as what they are: std::uint8_t, std::uint16_t or float, as `element` tells.
  template <class Element>
  std::span<const Element> as() const {
    return {reinterpret_cast<const Element*>(bytes.data()), elements()};
  }
};

/// The images of one file, for comparisons and displays. Raw frames are read by FrameReader, which
/// takes nothing else for one.
///
/// Threads: one at a time. Its functions throw Fault as those of FrameReader do.
class ImageReader {
 public:
  virtual ~ImageReader() = default;
  ImageReader(const ImageReader&) = delete;
  ImageReader& operator=(const ImageReader&) = delete;

  /// Images in the file.
  virtual std::size_t count() const = 0;

  /// Reads an image, from 0 up, into memory that is used again. Those of a file may differ in size
  /// and kind. Throws Fault of kind argument when there is no such image.
  void read(std::size_t index, Image& image);
  Image read(std::size_t index);

 protected:
  ImageReader() = default;

 private:
  virtual void load(std::size_t index, Image& image) = 0;
};

/// Opens the images of a file, whose content decides on the format:
///
/// - PNG: grey of 8 or 16 bits, RGB of 8.
/// - TIFF: any number of channels of 8 or 16 bits, or of floats; every page an image.
/// - PGM and PPM (P5, P6), one or several in a file.
/// - NPY: arrays of |u1, <u2, >u2 or <f4. Two sides are rows x columns, four are images x rows x
///   columns x channels. Three are rows x columns x channels when the last one is 3 for |u1, or 2
///   to 4 for <f4; otherwise they are images x rows x columns.
///
/// Throws Fault as open_frames does; of kind unsupported for a headerless file, whose shape nobody
/// knows.
std::unique_ptr<ImageReader> open_images(const std::filesystem::path& path);

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <memory>
#include <optional>

#include "kv/image_files/image_format.h"
#include "kv/image_files/image_writer.h"
#include "kv/image_files/pending_file.h"

namespace kv::polarization {

/// Writes images one after the other into one file, in the memory of one. In TIFF each is a page,
/// in NPY a step along the first axis: images x rows x columns, and x channels if there are
/// several. PGM and headerless images lie one behind the other.
///
/// All images have the sides, the channels and the stored type of the first one. Title and
/// provenance stand once, with the first. The time grows with the bytes alone: 10,000 small pages
/// take no longer each than one.
///
/// Threads: one at a time. After a Fault the file is of no use.
class StackWriter {
 public:
  virtual ~StackWriter() = default;
  StackWriter(const StackWriter&) = delete;
  StackWriter& operator=(const StackWriter&) = delete;

  /// Throws Fault as write_image does; of kind argument, too, for an image that is unlike the first
  /// one, or one more than were announced.
  void add(const GreyImage& image);
  void add(const FloatImage& image);

  /// To be called once all are added, before the file is closed. Throws Fault of kind argument when
  /// there are fewer images than were announced.
  void finish();

 protected:
  /// For the formats: what was announced, and how far it is.
  StackWriter(ImageFormat format, std::size_t images) : format_(format), images_(images) {}
  ImageFormat format() const { return format_; }
  std::size_t images() const { return images_; }  ///< announced
  bool at_first() const { return added_ == 0; }

 private:
  struct Shape {
    int width, height, channels;
    std::size_t element_size;  ///< 1, 2, or 4 for floats

    bool operator==(const Shape&) const = default;
  };

  void check_next(const Shape& shape);
  virtual void write(const GreyImage& image) = 0;
  virtual void write(const FloatImage& image) = 0;
  virtual void end() {}

  ImageFormat format_;
  std::size_t images_;
  std::size_t added_ = 0;
  std::optional<Shape> first_;
};

/// For a file that stays open as long as the writer, and whose owner closes and publishes it. The
/// number of images must be known, as headers tell it, or depend on it.
///
/// Throws Fault: argument for no images; unsupported when the format (see
/// ImageFormatTraits::stacks), or this build, does not take several.
std::unique_ptr<StackWriter> open_stack(PendingFile& file, ImageFormat format, std::size_t images,
                                        const WriteOptions& options = {});

}  // namespace kv::polarization

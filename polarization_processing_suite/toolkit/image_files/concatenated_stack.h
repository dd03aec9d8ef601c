// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <utility>

#include "kv/image_files/stack_writer.h"
#include "toolkit/image_files/format_table.h"

namespace kv::polarization {

/// Of a format whose files may lie one behind the other.
class ConcatenatedStack : public StackWriter {
 public:
  ConcatenatedStack(PendingFile& file, ImageFormat format, std::size_t images, WriteOptions options)
      : StackWriter(format, images), file_(file), options_(std::move(options)) {}

 private:
  void write(const GreyImage& image) override {
    functions_of(format()).write_grey(file_, image, options_);
    options_ = without_texts(options_);
  }
  void write(const FloatImage& image) override {
    functions_of(format()).write_floats(file_, image, options_);
    options_ = without_texts(options_);
  }

  PendingFile& file_;
  WriteOptions options_;
};

template <ImageFormat format>
std::unique_ptr<StackWriter> open_concatenated(PendingFile& file, std::size_t images,
                                               const WriteOptions& options) {
  return std::make_unique<ConcatenatedStack>(file, format, images, options);
}

}  // namespace kv::polarization

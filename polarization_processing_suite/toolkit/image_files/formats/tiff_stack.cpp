// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/formats/tiff_stack.h"

#include <cerrno>
#include <optional>
#include <utility>

#include "toolkit/image_files/format_table.h"
#include "toolkit/image_files/formats/tiff_writer.h"

namespace kv::polarization {
namespace {

class TiffStack : public StackWriter {
 public:
  TiffStack(PendingFile& file, std::size_t images, WriteOptions options)
      : StackWriter(ImageFormat::tiff, images), file_(file), options_(std::move(options)) {}

 private:
  void write(const GreyImage& image) override { write_page(image); }
  void write(const FloatImage& image) override { write_page(image); }

  template <class Image>
  void write_page(const Image& image) {
    errno = 0;
    if (at_first()) stream_.emplace(file_, needs_big_tiff(tiff_bytes(image), images()));
    write_tiff_page(file_, *stream_, image, options_);
    if (TIFFWriteDirectory(stream_->get()) != 1) file_.fail();
    options_ = without_texts(options_);
  }

  void end() override { stream_.reset(); }

  PendingFile& file_;
  WriteOptions options_;
  std::optional<TiffStream> stream_;
};

}  // namespace

std::unique_ptr<StackWriter> open_tiff_stack(PendingFile& file, std::size_t images,
                                             const WriteOptions& options) {
  return std::make_unique<TiffStack>(file, images, options);
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <tiffio.h>

#include <cstdarg>
#include <memory>
#include <string>

#include "kv/image_files/pending_file.h"
#include "toolkit/image_files/byte_source.h"

namespace kv::polarization {

/// Lets libtiff read and write through ByteSource and PendingFile, so that paths, sizes and
/// failures are treated the same way in all formats. What libtiff complains of stays with the file
/// it is about.
class TiffStream {
 public:
  explicit TiffStream(ByteSource& source);

  /// As BigTIFF for files above 4 gigabytes.
  TiffStream(PendingFile& file, bool big);

  TiffStream(const TiffStream&) = delete;
  TiffStream& operator=(const TiffStream&) = delete;

  /// Null when libtiff cannot open the file.
  TIFF* get() const { return tiff_.get(); }

  /// libtiff's first complaint since clear_message(); empty if there was none.
  const std::string& message() const { return message_; }
  void clear_message() { message_.clear(); }

 private:
  struct Close {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
  };
  struct FreeOptions {
    void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
  };
  using OptionsPointer = std::unique_ptr<TIFFOpenOptions, FreeOptions>;

  OptionsPointer make_options();
  static int keep_message(TIFF*, void* stream, const char*, const char* format,
                          std::va_list arguments);
  static tmsize_t read_source(thandle_t handle, void* data, tmsize_t size);
  static toff_t seek_source(thandle_t handle, toff_t offset, int whence);
  static toff_t size_of_source(thandle_t handle);

  ByteSource* source_ = nullptr;
  std::uint64_t position_ = 0;
  std::string message_;
  std::unique_ptr<TIFF, Close> tiff_;
};

}  // namespace kv::polarization

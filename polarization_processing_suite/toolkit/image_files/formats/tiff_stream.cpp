// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/formats/tiff_stream.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <new>

#include "platform/files.h"

namespace kv::polarization {
namespace {

/// What libtiff may ask for at once beyond what the file's own bytes account for: states of codecs.
constexpr std::uint64_t kCodecMemory = 16u << 20;

/// Each number of a page's arrays is kept in 8 bytes, and takes one of the file or more.
constexpr std::uint64_t kMemoryOfByte = 8;

tmsize_t refuse_write(thandle_t, void*, tmsize_t) { return -1; }
int ignore_warning(TIFF*, void*, const char*, const char*, std::va_list) { return 1; }
int leave_open(thandle_t) { return 0; }

std::FILE* stream_of(thandle_t handle) { return static_cast<PendingFile*>(handle)->stream(); }

tmsize_t read_pending(thandle_t handle, void* data, tmsize_t size) {
  return static_cast<tmsize_t>(
      std::fread(data, 1, static_cast<std::size_t>(size), stream_of(handle)));
}

tmsize_t write_pending(thandle_t handle, void* data, tmsize_t size) {
  return static_cast<tmsize_t>(
      std::fwrite(data, 1, static_cast<std::size_t>(size), stream_of(handle)));
}

toff_t seek_pending(thandle_t handle, toff_t offset, int whence) {
  std::FILE* stream = stream_of(handle);
  if (platform::seek(stream, static_cast<std::int64_t>(offset), whence) != 0) {
    return static_cast<toff_t>(-1);
  }
  return static_cast<toff_t>(platform::position(stream));
}

toff_t size_of_pending(thandle_t handle) {
  const toff_t here = seek_pending(handle, 0, SEEK_CUR);
  const toff_t size = seek_pending(handle, 0, SEEK_END);
  seek_pending(handle, here, SEEK_SET);
  return size;
}

}  // namespace

TiffStream::TiffStream(ByteSource& source) : source_(&source) {
  const OptionsPointer options = make_options();
  const std::uint64_t most = std::min(source.size(), std::uint64_t{1} << 56) * kMemoryOfByte;
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), static_cast<tmsize_t>(most + kCodecMemory));
  // m: no memory mapping, as the process would crash when someone shortens a mapped file.
  // c: a large strip is left as it is, so that it can be read at once, straight to its place.
  tiff_.reset(TIFFClientOpenExt("frame", "rmc", this, read_source, refuse_write, seek_source,
                                leave_open, size_of_source, nullptr, nullptr, options.get()));
}

TiffStream::TiffStream(PendingFile& file, bool big) {
  const OptionsPointer options = make_options();
  tiff_.reset(TIFFClientOpenExt("plane", big ? "w8" : "w", &file, read_pending, write_pending,
                                seek_pending, leave_open, size_of_pending, nullptr, nullptr,
                                options.get()));
}

TiffStream::OptionsPointer TiffStream::make_options() {
  OptionsPointer options(TIFFOpenOptionsAlloc());
  if (!options) throw std::bad_alloc();
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keep_message, this);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), ignore_warning, nullptr);
  return options;
}

/// The 1 that it returns keeps the complaint from the process's own handler.
int TiffStream::keep_message(TIFF*, void* stream, const char*, const char* format,
                             std::va_list arguments) {
  std::array<char, 256> text{};
  std::vsnprintf(text.data(), text.size(), format, arguments);
  std::string& message = static_cast<TiffStream*>(stream)->message_;
  if (message.empty()) message = text.data();
  return 1;
}

tmsize_t TiffStream::read_source(thandle_t handle, void* data, tmsize_t size) {
  auto* self = static_cast<TiffStream*>(handle);
  const std::size_t count =
      self->source_->read(self->position_, data, static_cast<std::size_t>(size));
  self->position_ += count;
  return static_cast<tmsize_t>(count);
}

toff_t TiffStream::seek_source(thandle_t handle, toff_t offset, int whence) {
  auto* self = static_cast<TiffStream*>(handle);
  if (whence == SEEK_CUR) offset += self->position_;
  if (whence == SEEK_END) offset += self->source_->size();
  self->position_ = offset;
  return offset;
}

toff_t TiffStream::size_of_source(thandle_t handle) {
  return static_cast<TiffStream*>(handle)->source_->size();
}

}  // namespace kv::polarization

// Lets libtiff read and write through InputFile and PendingFile, so that paths, sizes and failures
// are treated the same way in all formats.
#include "toolkit/image_files/tiff_stream.h"

#include <array>
#include <cstdarg>
#include <cstdio>

namespace kv::polarization {
namespace {

thread_local std::string message;

void keep_message(const char*, const char* format, std::va_list arguments) {
  std::array<char, 256> text{};
  std::vsnprintf(text.data(), text.size(), format, arguments);
  if (message.empty()) message = text.data();
}

void route_messages() {
  static const bool once = [] {
    TIFFSetErrorHandler(keep_message);
    TIFFSetWarningHandler(nullptr);
    return true;
  }();
  static_cast<void>(once);
}

tmsize_t read_input(thandle_t handle, void* data, tmsize_t size) {
  auto* file = static_cast<InputFile*>(handle);
  return static_cast<tmsize_t>(file->read(data, static_cast<std::size_t>(size)));
}

toff_t seek_input(thandle_t handle, toff_t offset, int whence) {
  auto* file = static_cast<InputFile*>(handle);
  std::uint64_t position = offset;
  if (whence == SEEK_CUR) position += static_cast<std::uint64_t>(file->stream().tellg());
  if (whence == SEEK_END) position += file->size();
  file->seek(position);
  return position;
}

toff_t size_of_input(thandle_t handle) { return static_cast<InputFile*>(handle)->size(); }

tmsize_t refuse_write(thandle_t, void*, tmsize_t) { return -1; }

tmsize_t read_pending(thandle_t handle, void* data, tmsize_t size) {
  std::FILE* stream = static_cast<PendingFile*>(handle)->stream();
  return static_cast<tmsize_t>(std::fread(data, 1, static_cast<std::size_t>(size), stream));
}

tmsize_t write_pending(thandle_t handle, void* data, tmsize_t size) {
  std::FILE* stream = static_cast<PendingFile*>(handle)->stream();
  return static_cast<tmsize_t>(std::fwrite(data, 1, static_cast<std::size_t>(size), stream));
}

toff_t seek_pending(thandle_t handle, toff_t offset, int whence) {
  std::FILE* stream = static_cast<PendingFile*>(handle)->stream();
  if (std::fseek(stream, static_cast<long>(offset), whence) != 0) return static_cast<toff_t>(-1);
  return static_cast<toff_t>(std::ftell(stream));
}

toff_t size_of_pending(thandle_t handle) {
  std::FILE* stream = static_cast<PendingFile*>(handle)->stream();
  const long here = std::ftell(stream);
  std::fseek(stream, 0, SEEK_END);
  const long size = std::ftell(stream);
  std::fseek(stream, here, SEEK_SET);
  return static_cast<toff_t>(size);
}

int leave_open(thandle_t) { return 0; }

}  // namespace

TiffPointer open_tiff_stream(InputFile& file) {
  route_messages();
  clear_tiff_message();
  // m: no memory mapping, as the process would crash when someone shortens a mapped file.
  return TiffPointer(TIFFClientOpen("frame", "rm", &file, read_input, refuse_write, seek_input,
                                    leave_open, size_of_input, nullptr, nullptr));
}

TiffPointer open_tiff_stream(PendingFile& file) {
  route_messages();
  clear_tiff_message();
  return TiffPointer(TIFFClientOpen("plane", "w", &file, read_pending, write_pending, seek_pending,
                                    leave_open, size_of_pending, nullptr, nullptr));
}

const std::string& last_tiff_message() { return message; }
void clear_tiff_message() { message.clear(); }

}  // namespace kv::polarization

#include "toolkit/image_files/input_file.h"

#include <cerrno>
#include <string>
#include <system_error>

#include "kv/polarization/fault.h"

namespace kv::polarization {

InputFile::InputFile(const std::filesystem::path& path) {
  std::error_code failure;
  const std::filesystem::file_status status = std::filesystem::status(path, failure);
  if (status.type() == std::filesystem::file_type::not_found) {
    throw Fault(FaultKind::file, "there is no such file; check the path");
  }
  if (status.type() == std::filesystem::file_type::directory) {
    throw Fault(FaultKind::file, "this is a folder; name the frame files in it");
  }
  errno = 0;
  stream_.open(path, std::ios::binary);
  if (!stream_) {
    throw Fault(FaultKind::file, "cannot be opened: " + std::generic_category().message(errno) +
                                     "; check that you may read it");
  }
  stream_.seekg(0, std::ios::end);
  const auto end = static_cast<std::streamoff>(stream_.tellg());
  if (!stream_ || end < 0)
    throw Fault(FaultKind::file, "not a regular file; frames are read from regular files only");
  size_ = static_cast<std::uint64_t>(end);
  if (size_ == 0) throw Fault(FaultKind::file, "the file is empty; a frame was expected");
  seek(0);
}

void InputFile::seek(std::uint64_t position) {
  stream_.clear();
  stream_.seekg(static_cast<std::streamoff>(position));
}

std::size_t InputFile::read(void* data, std::size_t size) {
  stream_.read(static_cast<char*>(data), static_cast<std::streamsize>(size));
  return static_cast<std::size_t>(stream_.gcount());
}

}  // namespace kv::polarization

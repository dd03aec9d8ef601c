// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/files.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace kv::platform {
namespace {

std::error_code last_error() { return {errno, std::generic_category()}; }

}  // namespace

std::FILE* open_for_writing(const std::filesystem::path& path) {
  return std::fopen(path.c_str(), "w+b");
}

std::FILE* open_nameless() { return std::tmpfile(); }

std::FILE* binary_standard_output() { return stdout; }

std::FILE* open_descriptor_for_writing(int descriptor) { return fdopen(descriptor, "ab"); }

int seek(std::FILE* stream, std::int64_t offset, int whence) {
  return fseeko(stream, offset, whence);
}

std::int64_t position(std::FILE* stream) { return ftello(stream); }

bool flush_to_disk(std::FILE* stream) {
  return std::fflush(stream) == 0 && fdatasync(fileno(stream)) == 0;
}

std::error_code rename_to_new(const std::filesystem::path& from, const std::filesystem::path& to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return {};
  if (errno != EINVAL && errno != ENOSYS) return last_error();
  // Network file systems may not know that flag; a link is never laid over a file either.
  if (link(from.c_str(), to.c_str()) == 0) {
    unlink(from.c_str());
    return {};
  }
  if (errno == EEXIST) return last_error();
  if (access(to.c_str(), F_OK) == 0) return make_error_code(std::errc::file_exists);
  return std::rename(from.c_str(), to.c_str()) == 0 ? std::error_code() : last_error();
}

void remove_file(const char* path) noexcept { unlink(path); }

}  // namespace kv::platform

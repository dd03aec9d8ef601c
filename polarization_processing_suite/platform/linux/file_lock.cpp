// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/file_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace kv::platform {
namespace {

/// Whether the file still has this name: a program that held the lock may have put another one in
/// its place before we got it.
bool has_name(int file, const std::filesystem::path& path) {
  struct stat opened {};
  struct stat named {};
  return fstat(file, &opened) == 0 && stat(path.c_str(), &named) == 0 &&
         opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

}  // namespace

std::optional<FileLock> FileLock::try_lock(const std::filesystem::path& path, Mode mode,
                                           std::error_code& failure) {
  failure.clear();
  // Network file systems want a file that is locked exclusively to be writable. A shared lock works
  // where one may only read.
  const bool shared = mode == Mode::shared;
  while (true) {
    const int file = open(path.c_str(), (shared ? O_RDONLY : O_RDWR) | O_CREAT | O_CLOEXEC, 0666);
    if (file < 0) {
      failure.assign(errno, std::generic_category());
      return std::nullopt;
    }
    FileLock lock(file);
    if (flock(file, (shared ? LOCK_SH : LOCK_EX) | LOCK_NB) != 0) {
      if (errno != EWOULDBLOCK) failure.assign(errno, std::generic_category());
      return std::nullopt;
    }
    if (has_name(file, path)) return lock;
  }
}

FileLock::~FileLock() {
  if (handle_ != kNone) close(static_cast<int>(handle_));
}

}  // namespace kv::platform

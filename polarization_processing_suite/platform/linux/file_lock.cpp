#include "platform/file_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

namespace kv::platform {

std::optional<FileLock> FileLock::try_lock(const std::filesystem::path& path, Mode mode,
                                           std::error_code& failure) {
  failure.clear();
  // Network file systems want a file that is locked exclusively to be writable. A shared lock works
  // where one may only read.
  const bool shared = mode == Mode::shared;
  const int file = open(path.c_str(), (shared ? O_RDONLY : O_RDWR) | O_CREAT | O_CLOEXEC, 0666);
  if (file < 0) {
    failure.assign(errno, std::generic_category());
    return std::nullopt;
  }
  FileLock lock(file);
  if (flock(file, (shared ? LOCK_SH : LOCK_EX) | LOCK_NB) == 0) return lock;
  if (errno != EWOULDBLOCK) failure.assign(errno, std::generic_category());
  return std::nullopt;
}

FileLock::~FileLock() {
  if (handle_ != kNone) close(static_cast<int>(handle_));
}

}  // namespace kv::platform

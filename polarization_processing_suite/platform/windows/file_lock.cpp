// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/file_lock.h"

#include <windows.h>

namespace kv::platform {
namespace {

HANDLE as_handle(std::intptr_t number) { return reinterpret_cast<HANDLE>(number); }

std::error_code last_error() { return {static_cast<int>(GetLastError()), std::system_category()}; }

}  // namespace

std::optional<FileLock> FileLock::try_lock(const std::filesystem::path& path, Mode mode,
                                           std::error_code& failure) {
  failure.clear();
  const DWORD access = mode == Mode::shared ? GENERIC_READ : GENERIC_READ | GENERIC_WRITE;
  FileLock lock(reinterpret_cast<Handle>(
      CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                  nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr)));
  if (lock.handle_ == kNone) {
    failure = last_error();
    return std::nullopt;
  }
  const DWORD how = mode == Mode::shared ? 0 : LOCKFILE_EXCLUSIVE_LOCK;
  // A byte far behind the content: locked bytes could not be read by others.
  OVERLAPPED place{};
  place.OffsetHigh = 0x7FFFFFFF;
  if (LockFileEx(as_handle(lock.handle_), how | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place) != 0) {
    return lock;
  }
  if (GetLastError() != ERROR_LOCK_VIOLATION) failure = last_error();
  return std::nullopt;
}

FileLock::~FileLock() {
  if (handle_ != kNone) CloseHandle(as_handle(handle_));
}

}  // namespace kv::platform

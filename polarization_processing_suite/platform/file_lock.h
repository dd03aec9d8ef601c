// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

namespace kv::platform {

/// A lock that programs agree on; it keeps nobody from reading or writing. Several holders share
/// one, or one holds it exclusively. It ends with the object, and with the process, however that
/// ends. The file stays; who holds it exclusively may remove it, or put another one in its place.
class FileLock {
 public:
  enum class Mode : std::uint8_t { shared, exclusive };

  /// Opens the file, or makes an empty one, and locks it without waiting. None when somebody else
  /// holds it, with `failure` clear, or when that fails.
  static std::optional<FileLock> try_lock(const std::filesystem::path& path, Mode mode,
                                          std::error_code& failure);

  FileLock(FileLock&& other) noexcept : handle_(std::exchange(other.handle_, kNone)) {}
  FileLock& operator=(FileLock&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~FileLock();

 private:
  using Handle = std::intptr_t;  ///< a descriptor, or a HANDLE
  static constexpr Handle kNone = -1;

  explicit FileLock(Handle handle) : handle_(handle) {}

  Handle handle_;
};

}  // namespace kv::platform

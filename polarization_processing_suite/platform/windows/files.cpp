// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/files.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cerrno>
#include <cstdlib>

namespace kv::platform {

/// By a handle of our own: files that the runtime's functions open can be removed by nobody.
std::FILE* open_for_writing(const std::filesystem::path& path) {
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    const std::error_code reason(static_cast<int>(GetLastError()), std::system_category());
    errno = reason.default_error_condition().value();
    return nullptr;
  }
  const int descriptor = _open_osfhandle(reinterpret_cast<std::intptr_t>(file), _O_BINARY);
  return descriptor < 0 ? nullptr : _fdopen(descriptor, "w+b");
}

std::FILE* open_nameless() {
  std::error_code failure;
  const std::filesystem::path folder = std::filesystem::temp_directory_path(failure);
  std::wstring name(MAX_PATH, L'\0');
  if (failure || GetTempFileNameW(folder.c_str(), L"kv", 0, name.data()) == 0) {
    errno = EACCES;
    return nullptr;
  }
  return _wfopen(name.c_str(), L"w+bTD");  // T: in memory where it fits; D: removed when closed
}

std::FILE* binary_standard_output() {
  _setmode(_fileno(stdout), _O_BINARY);
  return stdout;
}

std::FILE* open_descriptor_for_writing(int descriptor) { return _fdopen(descriptor, "ab"); }

int seek(std::FILE* stream, std::int64_t offset, int whence) {
  return _fseeki64(stream, offset, whence);
}

std::int64_t position(std::FILE* stream) { return _ftelli64(stream); }

bool flush_to_disk(std::FILE* stream) {
  return std::fflush(stream) == 0 && _commit(_fileno(stream)) == 0;
}

std::error_code rename_to_new(const std::filesystem::path& from, const std::filesystem::path& to) {
  if (MoveFileExW(from.c_str(), to.c_str(), 0) != 0) return {};
  const auto reason = static_cast<int>(GetLastError());
  if (reason == ERROR_ALREADY_EXISTS) return make_error_code(std::errc::file_exists);
  return {reason, std::system_category()};
}

void remove_file(const wchar_t* path) noexcept { DeleteFileW(path); }

}  // namespace kv::platform

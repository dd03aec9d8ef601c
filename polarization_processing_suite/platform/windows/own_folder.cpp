// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/own_folder.h"

#include <windows.h>

#include <string>

namespace kv::platform {

std::filesystem::path file_of(const void* address) {
  HMODULE library = nullptr;
  if (!GetModuleHandleExW(
          GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
          static_cast<const wchar_t*>(address), &library)) {
    return {};
  }
  constexpr DWORD kLongestPath = 32768;
  std::wstring path(kLongestPath, L'\0');
  const DWORD length = GetModuleFileNameW(library, path.data(), kLongestPath);
  path.resize(length < kLongestPath ? length : 0);
  return path;
}

std::filesystem::path file_of_loaded(const char* file_name) {
  const HMODULE library = GetModuleHandleA(file_name);
  // A library's handle is where it begins in memory.
  return library == nullptr ? std::filesystem::path() : file_of(library);
}

std::filesystem::path own_folder() {
  static const wchar_t within_this_library = 0;
  return file_of(&within_this_library).parent_path();
}

}  // namespace kv::platform

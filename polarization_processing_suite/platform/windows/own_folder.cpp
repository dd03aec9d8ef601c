#include "platform/own_folder.h"

#include <windows.h>

#include <string>

namespace kv::platform {

std::filesystem::path own_folder() {
  static const wchar_t within_this_library = 0;
  HMODULE library = nullptr;
  if (!GetModuleHandleExW(
          GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
          &within_this_library, &library)) {
    return {};
  }
  constexpr DWORD kLongestPath = 32768;
  std::wstring path(kLongestPath, L'\0');
  const DWORD length = GetModuleFileNameW(library, path.data(), kLongestPath);
  path.resize(length < kLongestPath ? length : 0);
  return std::filesystem::path(path).parent_path();
}

}  // namespace kv::platform

#include <windows.h>

#include <stdexcept>
#include <string>

#include "shared_library.h"

namespace kv::test {

const char* const kLibrarySuffix = ".dll";

SharedLibrary::SharedLibrary(const std::filesystem::path& path) {
  // Bare names are looked for in the folder of the program and in this one, not beside the library.
  SetDllDirectoryW(path.parent_path().c_str());
  handle_ = reinterpret_cast<void*>(LoadLibraryW(path.c_str()));
  if (handle_ == nullptr) throw std::runtime_error("cannot load " + path.string());
}

SharedLibrary::~SharedLibrary() { FreeLibrary(reinterpret_cast<HMODULE>(handle_)); }

void* SharedLibrary::find(const char* name) const {
  const FARPROC address = GetProcAddress(reinterpret_cast<HMODULE>(handle_), name);
  if (address == nullptr) throw std::runtime_error(std::string("no export ") + name);
  return reinterpret_cast<void*>(address);
}

void drop_library(const std::filesystem::path& path) {
  while (const HMODULE handle = GetModuleHandleW(path.c_str())) FreeLibrary(handle);
}

}  // namespace kv::test

#include <dlfcn.h>

#include <stdexcept>

#include "shared_library.h"

namespace kv::test {

const char* const kLibrarySuffix = ".so";

SharedLibrary::SharedLibrary(const std::filesystem::path& path)
    : handle_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (handle_ == nullptr) throw std::runtime_error(dlerror());
}

SharedLibrary::~SharedLibrary() { dlclose(handle_); }

void* SharedLibrary::find(const char* name) const {
  void* const address = dlsym(handle_, name);
  if (address == nullptr) throw std::runtime_error(dlerror());
  return address;
}

void drop_library(const std::filesystem::path& path) {
  while (void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD)) {
    dlclose(handle);  // of this look
    dlclose(handle);  // of the one who left it loaded
  }
}

}  // namespace kv::test

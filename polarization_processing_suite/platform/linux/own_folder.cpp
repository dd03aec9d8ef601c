#include "platform/own_folder.h"

#include <dlfcn.h>

namespace kv::platform {

std::filesystem::path own_folder() {
  static const char within_this_library = 0;
  Dl_info info{};
  if (dladdr(&within_this_library, &info) == 0 || info.dli_fname == nullptr) return {};
  return std::filesystem::path(info.dli_fname).parent_path();
}

}  // namespace kv::platform

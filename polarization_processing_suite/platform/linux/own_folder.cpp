// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/own_folder.h"

#include <dlfcn.h>
#include <link.h>

namespace kv::platform {

std::filesystem::path file_of(const void* address) {
  Dl_info info{};
  if (dladdr(address, &info) == 0 || info.dli_fname == nullptr) return {};
  return info.dli_fname;
}

std::filesystem::path file_of_loaded(const char* file_name) {
  void* const library = dlopen(file_name, RTLD_NOW | RTLD_NOLOAD);
  if (library == nullptr) return {};
  link_map* entry = nullptr;
  std::filesystem::path file;
  if (dlinfo(library, RTLD_DI_LINKMAP, &entry) == 0) file = entry->l_name;
  dlclose(library);
  return file;
}

std::filesystem::path own_folder() {
  static const char within_this_library = 0;
  return file_of(&within_this_library).parent_path();
}

}  // namespace kv::platform

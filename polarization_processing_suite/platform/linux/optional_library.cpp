// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/optional_library.h"

#include <dlfcn.h>

namespace kv::platform {

const char* const kLibrarySuffix = ".so";

LibraryHandle load_library(const char* file_name) {
  return dlopen(file_name, RTLD_NOW | RTLD_LOCAL);
}

void* find_export(LibraryHandle library, const char* name) { return dlsym(library, name); }

void unload_library(LibraryHandle library) { dlclose(library); }

bool is_loaded(const char* file_name) {
  void* const library = dlopen(file_name, RTLD_NOW | RTLD_NOLOAD);
  if (library != nullptr) dlclose(library);
  return library != nullptr;
}

}  // namespace kv::platform

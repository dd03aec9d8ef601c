// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/optional_library.h"

#include <windows.h>

namespace kv::platform {

const char* const kLibrarySuffix = ".dll";

LibraryHandle load_library(const char* file_name) { return LoadLibraryA(file_name); }

void* find_export(LibraryHandle library, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}

void unload_library(LibraryHandle library) { FreeLibrary(static_cast<HMODULE>(library)); }

bool is_loaded(const char* file_name) { return GetModuleHandleA(file_name) != nullptr; }

}  // namespace kv::platform

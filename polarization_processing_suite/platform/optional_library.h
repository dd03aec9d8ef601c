// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace kv::platform {

/// A shared library that may be missing; null when it is.
using LibraryHandle = void*;

/// The suffix of a shared library's file name.
extern const char* const kLibrarySuffix;

/// Loads a library by its bare file name, wherever the platform looks for it.
LibraryHandle load_library(const char* file_name);

/// Null when the library has no such export.
void* find_export(LibraryHandle library, const char* name);

void unload_library(LibraryHandle library);

/// Whether the process has loaded a library of that bare file name.
bool is_loaded(const char* file_name);

template <class Function>
Function find_function(LibraryHandle library, const char* name) {
  return reinterpret_cast<Function>(find_export(library, name));
}

}  // namespace kv::platform

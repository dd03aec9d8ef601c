// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>

namespace kv::platform {

/// The folder of the library or program that this code is linked into; empty when the platform does
/// not tell.
std::filesystem::path own_folder();

/// The file of the library or program that the address is of; empty when there is none, or when the
/// platform does not tell.
std::filesystem::path file_of(const void* address);

/// The file of a library that the process has loaded by that bare file name; empty when it has not.
std::filesystem::path file_of_loaded(const char* file_name);

}  // namespace kv::platform

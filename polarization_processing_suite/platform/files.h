// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace kv::platform {

/// Makes or empties a file, for writing and reading; null, with errno set, when that fails. It can
/// be removed while it is open.
std::FILE* open_for_writing(const std::filesystem::path& path);

/// A file without a name, for writing and reading, that is gone when it is closed; null, with errno
/// set, when that fails.
std::FILE* open_nameless();

/// The process's standard output, as bytes.
std::FILE* binary_standard_output();

/// A descriptor of the process that another program has opened; null, with errno set, when it is
/// not open for writing. Closing the stream closes it.
std::FILE* open_descriptor_for_writing(int descriptor);

/// As std::fseek and std::ftell, in files of any size. Below 0, with errno set, when that fails.
int seek(std::FILE* stream, std::int64_t offset, int whence);
std::int64_t position(std::FILE* stream);

/// Hands what was written to the disk; false, with errno set, when that fails.
bool flush_to_disk(std::FILE* stream);

/// As a rename, but never replaces a file: it fails with std::errc::file_exists. On file systems
/// that know neither such a rename nor links, a file that comes into being at the same moment is
/// replaced.
std::error_code rename_to_new(const std::filesystem::path& from, const std::filesystem::path& to);

/// For signal handlers, too. Failures stay untold.
void remove_file(const std::filesystem::path::value_type* path) noexcept;

}  // namespace kv::platform

#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>

namespace kv::platform {

/// Makes or empties a file, for writing and reading; null, with errno set, when that fails.
std::FILE* open_for_writing(const std::filesystem::path& path);

/// As std::fseek and std::ftell, in files of any size. Below 0, with errno set, when that fails.
int seek(std::FILE* stream, std::int64_t offset, int whence);
std::int64_t position(std::FILE* stream);

}  // namespace kv::platform

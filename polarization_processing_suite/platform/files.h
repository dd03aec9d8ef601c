#pragma once

#include <cstdio>
#include <filesystem>

namespace kv::platform {

/// Makes or empties a file, for writing and reading; null, with errno set, when that fails.
std::FILE* open_for_writing(const std::filesystem::path& path);

}  // namespace kv::platform

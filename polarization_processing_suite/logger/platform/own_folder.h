#pragma once

#include <filesystem>

namespace kv::logger {

/// The folder that this library was loaded from; empty when the platform does not tell.
std::filesystem::path own_folder();

}  // namespace kv::logger

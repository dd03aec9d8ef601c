#pragma once

#include <filesystem>

namespace kv::platform {

/// The folder of the library or program that this code is linked into; empty when the platform does
/// not tell.
std::filesystem::path own_folder();

}  // namespace kv::platform

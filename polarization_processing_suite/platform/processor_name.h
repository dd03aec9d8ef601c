#pragma once

#include <string>

namespace kv::platform {

/// What the processor calls itself; empty when it does not tell.
std::string processor_name();

}  // namespace kv::platform

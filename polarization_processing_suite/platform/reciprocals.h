#pragma once

#include <string>

namespace kv::platform {

/// What the processor's approximate reciprocal gives for 8192 numbers from 1 to 2, which is more
/// than the entries of its table: processors with equal bytes here give equal planes.
std::string reciprocal_table();

}  // namespace kv::platform

#pragma once

#include <cstddef>

namespace kv::platform {

/// Asks the operating system to back memory by huge pages, where it leaves that to programs. Without
/// effect where it does not, or has none.
void prefer_huge_pages(void* memory, std::size_t bytes);

}  // namespace kv::platform

#include "platform/memory.h"

namespace kv::platform {

void prefer_huge_pages(void*, std::size_t) {}  // huge pages need a privilege there

}  // namespace kv::platform

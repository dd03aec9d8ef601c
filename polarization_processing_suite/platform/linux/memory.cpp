#include "platform/memory.h"

#include <sys/mman.h>

namespace kv::platform {

void prefer_huge_pages(void* memory, std::size_t bytes) { madvise(memory, bytes, MADV_HUGEPAGE); }

}  // namespace kv::platform

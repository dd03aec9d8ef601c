#include <windows.h>

#include <system_error>

#include "fenced_memory.h"

namespace kv::test {
namespace {

void check(bool fine) {
  if (!fine) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(),
                            "fenced memory");
  }
}

std::size_t page_size() {
  SYSTEM_INFO system;
  GetSystemInfo(&system);
  return system.dwPageSize;
}

}  // namespace

FencedMemory::FencedMemory(std::size_t bytes, Fence fence) {
  const std::size_t page = page_size();
  const std::size_t inside = (bytes + page - 1) / page * page;
  mapping_size_ = inside + page;
  mapping_ = VirtualAlloc(nullptr, mapping_size_, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
  check(mapping_ != nullptr);

  auto* const first = static_cast<unsigned char*>(mapping_);
  unsigned char* const closed_page = fence == Fence::before ? first : first + inside;
  DWORD before = 0;
  check(VirtualProtect(closed_page, page, PAGE_NOACCESS, &before) != 0);
  data_ = fence == Fence::before ? first + page : closed_page - bytes;
}

FencedMemory::~FencedMemory() { VirtualFree(mapping_, 0, MEM_RELEASE); }

}  // namespace kv::test

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "fenced_memory.h"

namespace kv::test {
namespace {

void check(bool fine) {
  if (!fine) throw std::system_error(errno, std::generic_category(), "fenced memory");
}

}  // namespace

FencedMemory::FencedMemory(std::size_t bytes, Fence fence) {
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  const std::size_t inside = (bytes + page - 1) / page * page;
  mapping_size_ = inside + page;
  mapping_ =
      mmap(nullptr, mapping_size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  check(mapping_ != MAP_FAILED);

  auto* const first = static_cast<unsigned char*>(mapping_);
  unsigned char* const closed_page = fence == Fence::before ? first : first + inside;
  check(mprotect(closed_page, page, PROT_NONE) == 0);
  data_ = fence == Fence::before ? first + page : closed_page - bytes;
}

FencedMemory::~FencedMemory() { munmap(mapping_, mapping_size_); }

}  // namespace kv::test

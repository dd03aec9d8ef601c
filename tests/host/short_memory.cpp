#include "short_memory.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

namespace kv::test {
namespace {

constexpr long kNever = std::numeric_limits<long>::max();

std::atomic<long> until_failure = kNever;
std::atomic<bool> memory_stays_short = false;
std::atomic<long> alive = 0;

bool refused() {
  if (until_failure == kNever) return false;
  if (until_failure > 0) {
    --until_failure;
    return false;
  }
  if (!memory_stays_short) until_failure = kNever;
  return true;
}

void* allocate(std::size_t size) {
  while (true) {
    if (void* const memory = refused() ? nullptr : std::malloc(size)) {
      ++alive;
      return memory;
    }
    const std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) throw std::bad_alloc();
    handler();
  }
}

void release(void* memory) {
  if (memory != nullptr) --alive;
  std::free(memory);
}

}  // namespace

long allocations_alive() { return alive; }

ShortMemory::ShortMemory(long successes, bool stays_short) {
  memory_stays_short = stays_short;
  until_failure = successes;
}

void ShortMemory::end() { until_failure = kNever; }

}  // namespace kv::test

// All forms of new and delete end in these. Loaded libraries use those of the program.
void* operator new(std::size_t size) { return kv::test::allocate(size); }
void operator delete(void* memory) noexcept { kv::test::release(memory); }
void operator delete(void* memory, std::size_t) noexcept { kv::test::release(memory); }

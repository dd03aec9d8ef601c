#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstddef>

namespace kv::test {

/// Zeros from the operating system, which takes memory for the touched pages only.
class MappedMemory {
 public:
  explicit MappedMemory(std::size_t bytes)
      : size_(bytes),
        data_(mmap(nullptr, bytes, PROT_READ | PROT_WRITE,
                   MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) {
    EXPECT_NE(data_, MAP_FAILED);
  }
  ~MappedMemory() { munmap(data_, size_); }
  MappedMemory(const MappedMemory&) = delete;
  MappedMemory& operator=(const MappedMemory&) = delete;

  void* at(std::size_t offset) const { return static_cast<unsigned char*>(data_) + offset; }

 private:
  std::size_t size_;
  void* data_;
};

}  // namespace kv::test

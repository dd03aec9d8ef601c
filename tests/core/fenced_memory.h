#pragma once

#include <cstddef>

namespace kv::test {

/// Where memory touches a page that can be neither read nor written.
enum class Fence { before, after };

/// Memory whose first or last byte is the neighbour of such a page. It starts out as zeros.
class FencedMemory {
 public:
  FencedMemory(std::size_t bytes, Fence fence);
  ~FencedMemory();
  FencedMemory(const FencedMemory&) = delete;
  FencedMemory& operator=(const FencedMemory&) = delete;

  void* data() const { return data_; }

 private:
  void* mapping_;
  std::size_t mapping_size_;
  void* data_;
};

template <class Element>
class FencedPlane {
 public:
  FencedPlane(std::size_t size, Fence fence) : memory_(size * sizeof(Element), fence) {}
  Element* data() { return static_cast<Element*>(memory_.data()); }

 private:
  FencedMemory memory_;
};

}  // namespace kv::test

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <span>
#include <type_traits>
#include <utility>

namespace kv::polarization {

/// Memory for that many elements of a size in bytes. It begins at a multiple of 64 bytes. From 4
/// megabytes up it begins at a multiple of 2 megabytes, and the operating system is asked for huge
/// pages, which take a tenth to a quarter off the time of the linear planes. Throws Fault of kind
/// memory.
void* allocate_pages(std::size_t count, std::size_t size);

/// Gives back what allocate_pages() gave for the same numbers. Null is nothing to give back.
void free_pages(void* memory, std::size_t count, std::size_t size) noexcept;

/// Numbers in one piece of memory that is kept: a buffer grows when it must, and never gives memory
/// back before its end, so that frame after frame goes through the same one.
///
/// A range like std::vector, but new elements have no value until they are written.
template <class Number>
requires std::is_arithmetic_v<Number>
class Buffer {
 public:
  /// As containers have it.
  using value_type = Number;  // NOLINT(readability-identifier-naming): as containers have it

  Buffer() = default;

  /// Copies have memory of their own; moves hand it over.
  explicit Buffer(std::size_t size) { resize(size); }
  Buffer(std::initializer_list<Number> values) {
    resize(values.size());
    std::copy(values.begin(), values.end(), data_);
  }
  Buffer(const Buffer& other) { assign(other); }
  Buffer(Buffer&& other) noexcept { swap(other); }
  Buffer& operator=(const Buffer& other) {
    if (this != &other) assign(other);
    return *this;
  }
  Buffer& operator=(Buffer&& other) noexcept {
    swap(other);
    return *this;
  }
  ~Buffer() { free_pages(data_, capacity_, sizeof(Number)); }

  /// The elements, as containers of the standard library hand them out; nothing is checked.
  Number* data() noexcept { return data_; }
  const Number* data() const noexcept { return data_; }
  std::size_t size() const noexcept { return size_; }
  bool empty() const noexcept { return size_ == 0; }
  Number* begin() noexcept { return data_; }
  Number* end() noexcept { return data_ + size_; }
  const Number* begin() const noexcept { return data_; }
  const Number* end() const noexcept { return data_ + size_; }
  Number& operator[](std::size_t index) noexcept { return data_[index]; }
  const Number& operator[](std::size_t index) const noexcept { return data_[index]; }

  /// Changes the number of elements. Their values are lost when the buffer has to grow.
  /// Throws Fault of kind memory, and then leaves the buffer as it was.
  void resize(std::size_t size) {
    if (size > capacity_) {
      void* memory = allocate_pages(size, sizeof(Number));
      free_pages(data_, capacity_, sizeof(Number));
      data_ = static_cast<Number*>(memory);
      capacity_ = size;
    }
    size_ = size;
  }

  /// Of the same elements; capacity does not count.
  friend bool operator==(const Buffer& a, const Buffer& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end());
  }

 private:
  void swap(Buffer& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
  }
  void assign(const Buffer& other) {
    resize(other.size_);
    std::copy(other.begin(), other.end(), data_);
  }

  Number* data_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace kv::polarization

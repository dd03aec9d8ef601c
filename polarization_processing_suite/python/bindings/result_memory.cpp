// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "python/bindings/result_memory.h"

#include <algorithm>
#include <new>
#include <utility>

#include "kv/polarization/buffer.h"

namespace kv::polarization::python {
namespace {

/// For less the allocator of numpy has pages of its own, and a call takes longer than they do.
constexpr std::size_t kLeast = std::size_t{1} << 20;

/// More than is ever kept where an array is too large to tell.
std::size_t bytes_of(const py::dtype& dtype, const std::vector<py::ssize_t>& shape) {
  constexpr std::size_t too_many = ResultMemory::kMostKept + 1;
  auto bytes = static_cast<std::size_t>(dtype.itemsize());
  for (const py::ssize_t side : shape) {
    if (side == 0) return 0;
    bytes = std::min(bytes, too_many) * std::min(static_cast<std::size_t>(side), too_many);
  }
  return bytes;
}

}  // namespace

/// The memory of an array.
struct ResultMemory::Piece {
  Piece(std::shared_ptr<ResultMemory> from, std::size_t size)
      : home(std::move(from)), memory(home->take(size)), bytes(size) {}
  Piece(const Piece&) = delete;
  Piece& operator=(const Piece&) = delete;
  ~Piece() { home->give_back(memory, bytes); }

  std::shared_ptr<ResultMemory> home;
  void* memory;
  std::size_t bytes;
};

ResultMemory::~ResultMemory() {
  for (const auto& [bytes, memory] : idle_) free_pages(memory, bytes, 1);
}

py::array ResultMemory::array(const py::dtype& dtype, const std::vector<py::ssize_t>& shape) {
  const std::size_t bytes = bytes_of(dtype, shape);
  if (bytes < kLeast || bytes > kMostKept) return {dtype, shape};
  auto piece = std::make_unique<Piece>(shared_from_this(), bytes);
  void* const memory = piece->memory;
  const py::capsule owner(piece.get(), [](void* object) { delete static_cast<Piece*>(object); });
  static_cast<void>(piece.release());
  return {dtype, shape, memory, owner};
}

void* ResultMemory::take(std::size_t bytes) {
  {
    const std::lock_guard lock(mutex_);
    if (const auto found = idle_.find(bytes); found != idle_.end()) {
      void* const memory = found->second;
      idle_.erase(found);
      idle_bytes_ -= bytes;
      return memory;
    }
  }
  return allocate_pages(bytes, 1);
}

void ResultMemory::give_back(void* memory, std::size_t bytes) noexcept {
  try {
    const std::lock_guard lock(mutex_);
    if (idle_bytes_ + bytes <= kMostKept) {
      idle_.emplace(bytes, memory);
      idle_bytes_ += bytes;
      return;
    }
  } catch (const std::bad_alloc&) {
    // Without room to remember it, it goes.
  }
  free_pages(memory, bytes, 1);
}

}  // namespace kv::polarization::python

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <pybind11/numpy.h>

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace kv::polarization::python {

namespace py = pybind11;

/// Arrays for results, in memory of earlier ones that nobody holds any more: pages that are new to
/// a process take as long as the planes that are written to them.
class ResultMemory : public std::enable_shared_from_this<ResultMemory> {
 public:
  /// What is kept between calls, at most: the planes of a frame of 5 megapixels, or those of many
  /// smaller ones.
  static constexpr std::size_t kMostKept = std::size_t{64} << 20;

  ~ResultMemory();

  /// Its elements have no value. Throws Fault of kind memory.
  py::array array(const py::dtype& dtype, const std::vector<py::ssize_t>& shape);

 private:
  struct Piece;

  void* take(std::size_t bytes);
  void give_back(void* memory, std::size_t bytes) noexcept;

  std::mutex mutex_;
  std::multimap<std::size_t, void*> idle_;  // by their bytes
  std::size_t idle_bytes_ = 0;
};

}  // namespace kv::polarization::python

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <pybind11/numpy.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kv/polarization/frame.h"
#include "python/bindings/result_memory.h"

namespace kv::polarization::python {

namespace py = pybind11;

/// The object as an array; TypeError for anything else, such as what merely claims to have memory
/// and may be wrong about it, and for masked arrays, whose mask would be lost.
py::array array_of(const py::handle& object, const std::string& what);

/// Whether the elements are of that type, in the same byte order.
bool is_of(const py::array& array, const py::dtype& dtype);

/// The blocks that an array's last axes make, one for each place on its leading axes. Lookups touch
/// no Python object, so that they need no lock of the interpreter.
class BlockStack {
 public:
  BlockStack() = default;
  BlockStack(const py::array& array, std::size_t block_axes, std::size_t block_bytes);

  std::size_t count() const { return count_; }
  std::size_t block_bytes() const { return block_bytes_; }  ///< from the first to the last one
  std::byte* operator[](std::size_t index) const;

  /// Addresses of the first byte of all blocks, and behind the last one.
  std::pair<std::uintptr_t, std::uintptr_t> reach() const;

  /// Whether each axis steps over all that the shorter steps reach, as in all arrays but those that
  /// were made to overlap themselves.
  bool are_nested() const;

 private:
  std::byte* first_ = nullptr;
  std::vector<std::size_t> shape_;
  std::vector<std::ptrdiff_t> strides_;  // bytes
  std::size_t count_ = 0;
  std::size_t block_bytes_ = 0;
};

struct SampleLayout {
  std::optional<int> bit_depth{};  ///< all bits of the elements where none is given
  SampleAlignment alignment = SampleAlignment::right;
};

/// Raw frames in an array (..., rows, columns) of uint8 or uint16, which are taken as they lie.
/// Rows whose samples do not follow each other from the left, or that do not follow each other
/// downwards, are copied, once for the whole array.
///
/// Throws TypeError for anything else, and ValueError for arrays without pixels.
class FrameStack {
 public:
  FrameStack(const py::object& frames, const SampleLayout& layout);

  std::size_t count() const { return blocks_.count(); }
  int width() const { return first_.width; }
  int height() const { return first_.height; }
  const FrameView& first() const { return first_; }  ///< its memory only if there are frames
  FrameView operator[](std::size_t index) const;
  const BlockStack& blocks() const { return blocks_; }

  /// The leading axes, and behind them `block`.
  std::vector<py::ssize_t> shape_with(const std::vector<py::ssize_t>& block) const;

 private:
  py::array array_;
  FrameView first_;
  BlockStack blocks_;
};

/// A result's array: of this name, dtype and shape, each block of which lies in one piece. Takes
/// `given`, or one from `memory` where that is None. Throws TypeError for another type, ValueError
/// for all else that cannot be written to.
py::array output_array(std::string_view name, const py::handle& given, const py::dtype& dtype,
                       const std::vector<py::ssize_t>& shape, std::size_t block_axes,
                       ResultMemory& memory);

/// A result, by its name.
struct Output {
  std::string name;
  py::array array;
  BlockStack blocks;
};

/// A result of the frames' leading axes, rows and columns, and behind them, if there are several
/// elements a pixel, an axis of those. Throws as output_array does.
Output make_output(const FrameStack& frames, const std::string& name, const py::handle& given,
                   const py::dtype& dtype, ResultMemory& memory, std::size_t elements_a_pixel = 1);

/// Throws ValueError where a result shares memory with another one, with itself, or with the
/// frames.
void check_disjoint(const std::vector<Output>& outputs, const BlockStack& frames);

}  // namespace kv::polarization::python

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "python/bindings/arrays.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>

namespace kv::polarization::python {
namespace {

[[noreturn]] void refuse_type(const std::string& line) { throw py::type_error(line); }
[[noreturn]] void refuse_value(const std::string& line) { throw py::value_error(line); }

std::string text_of(const std::vector<py::ssize_t>& shape) {
  std::string text = "(";
  for (std::size_t axis = 0; axis < shape.size(); ++axis) {
    text += (axis == 0 ? "" : ", ") + std::to_string(shape[axis]);
  }
  return text + (shape.size() == 1 ? ",)" : ")");
}

std::vector<py::ssize_t> shape_of(const py::array& array) {
  return {array.shape(), array.shape() + array.ndim()};
}

std::string text_of(const py::handle& object) { return py::str(object); }

std::string type_name(const py::handle& object) {
  return text_of(py::type::handle_of(object).attr("__name__"));
}

}  // namespace

py::array array_of(const py::handle& object, const std::string& what) {
  if (!py::isinstance<py::array>(object)) {
    refuse_type(what + " must be a numpy array, not " + type_name(object) +
                "; numpy.asarray makes one");
  }
  const auto* const plain = reinterpret_cast<PyObject*>(py::detail::npy_api::get().PyArray_Type_);
  if (py::type::handle_of(object).ptr() != plain && py::hasattr(object, "mask")) {
    refuse_type(what +
                " must have no mask, as planes have none; hand over masked.data, and the mask as "
                "bad_pixels");
  }
  return py::reinterpret_borrow<py::array>(object);
}

bool is_of(const py::array& array, const py::dtype& dtype) {
  return py::detail::npy_api::get().PyArray_EquivTypes_(array.dtype().ptr(), dtype.ptr());
}

namespace {

[[noreturn]] void refuse_sample_type(const py::array& array) {
  const std::string name = text_of(py::handle(array.dtype()));
  const std::string cure =
      array.dtype().kind() == 'u' && array.itemsize() <= 2
          ? "it has another byte order; frames.astype(frames.dtype.newbyteorder('=')) turns it"
          : "samples are never converted without being told; where they are whole counts, "
            "frames.astype(numpy.uint16) converts them";
  refuse_type("frames must be of uint8 or uint16 in this machine's byte order, not " + name + ": " +
              cure);
}

/// Rows one below the other, each in one piece.
bool has_plain_rows(const py::array& array) {
  const py::ssize_t axes = array.ndim();
  const py::ssize_t width = array.shape(axes - 1);
  const bool plain_row = width == 1 || array.strides(axes - 1) == array.itemsize();
  return plain_row &&
         (array.shape(axes - 2) == 1 || array.strides(axes - 2) >= width * array.itemsize());
}

int side_of(py::ssize_t size) {
  return static_cast<int>(std::min<py::ssize_t>(size, std::numeric_limits<int>::max()));
}

bool in_one_piece(const py::array& array, std::size_t block_axes) {
  py::ssize_t step = array.itemsize();
  for (std::size_t i = 0; i < block_axes; ++i) {
    const py::ssize_t axis = array.ndim() - 1 - static_cast<py::ssize_t>(i);
    if (array.shape(axis) != 1 && array.strides(axis) != step) return false;
    step *= array.shape(axis);
  }
  return true;
}

struct Extent {
  std::uintptr_t begin;
  std::uintptr_t end;
  bool is_of_first;
};

bool meet(const Extent& a, const Extent& b) { return a.begin < b.end && b.begin < a.end; }

/// Block by block, for stacks that lie between each other: whether a block of one meets any of the
/// other. Blocks of the same stack may share memory.
bool share_memory(const BlockStack& first, const BlockStack& second) {
  std::vector<Extent> extents;
  extents.reserve(first.count() + second.count());
  for (const BlockStack* blocks : {&first, &second}) {
    for (std::size_t index = 0; index < blocks->count(); ++index) {
      const auto begin = reinterpret_cast<std::uintptr_t>((*blocks)[index]);
      extents.push_back({begin, begin + blocks->block_bytes(), blocks == &first});
    }
  }
  std::sort(extents.begin(), extents.end(),
            [](const Extent& a, const Extent& b) { return a.begin < b.begin; });
  std::array<std::uintptr_t, 2> reached{};  // by each stack, among the extents so far
  for (const Extent& extent : extents) {
    if (extent.begin < reached[extent.is_of_first ? 0 : 1]) return true;
    std::uintptr_t& end = reached[extent.is_of_first ? 1 : 0];
    end = std::max(end, extent.end);
  }
  return false;
}

bool can_share_memory(const BlockStack& a, const BlockStack& b) {
  const auto extent = [](const BlockStack& blocks) {
    const auto [begin, end] = blocks.reach();
    return Extent{begin, end, false};
  };
  return a.count() > 0 && b.count() > 0 && meet(extent(a), extent(b)) && share_memory(a, b);
}

[[noreturn]] void refuse_shared(const Output& output, const std::string& other) {
  refuse_value("the array for '" + output.name + "' shares memory with " + other +
               "; it must have memory of its own");
}

}  // namespace

BlockStack::BlockStack(const py::array& array, std::size_t block_axes, std::size_t block_bytes)
    : first_(static_cast<std::byte*>(const_cast<void*>(array.data()))),
      count_(1),
      block_bytes_(block_bytes) {
  const auto leading = static_cast<std::size_t>(array.ndim()) - block_axes;
  for (std::size_t axis = 0; axis < leading; ++axis) {
    shape_.push_back(static_cast<std::size_t>(array.shape(static_cast<py::ssize_t>(axis))));
    strides_.push_back(array.strides(static_cast<py::ssize_t>(axis)));
    count_ *= shape_.back();
  }
}

std::byte* BlockStack::operator[](std::size_t index) const {
  std::ptrdiff_t offset = 0;
  for (std::size_t axis = shape_.size(); axis-- > 0; index /= shape_[axis]) {
    offset += static_cast<std::ptrdiff_t>(index % shape_[axis]) * strides_[axis];
  }
  return first_ + offset;
}

std::pair<std::uintptr_t, std::uintptr_t> BlockStack::reach() const {
  auto begin = reinterpret_cast<std::uintptr_t>(first_);
  std::uintptr_t end = begin + block_bytes_;
  for (std::size_t axis = 0; axis < shape_.size(); ++axis) {
    const std::ptrdiff_t furthest = static_cast<std::ptrdiff_t>(shape_[axis] - 1) * strides_[axis];
    (furthest < 0 ? begin : end) += static_cast<std::uintptr_t>(furthest);
  }
  return {begin, end};
}

bool BlockStack::are_nested() const {
  std::vector<std::pair<std::size_t, std::size_t>> axes;  // steps, sizes
  for (std::size_t axis = 0; count_ > 0 && axis < shape_.size(); ++axis) {
    if (shape_[axis] > 1) {
      axes.emplace_back(static_cast<std::size_t>(std::abs(strides_[axis])), shape_[axis]);
    }
  }
  std::sort(axes.begin(), axes.end());
  std::size_t reached = block_bytes_;
  for (const auto& [step, size] : axes) {
    if (step < reached) return false;
    reached += step * (size - 1);
  }
  return true;
}

FrameStack::FrameStack(const py::object& frames, const SampleLayout& layout)
    : array_(array_of(frames, "frames")) {
  const bool bytes = is_of(array_, py::dtype::of<std::uint8_t>());
  if (!bytes && !is_of(array_, py::dtype::of<std::uint16_t>())) refuse_sample_type(array_);
  const std::vector<py::ssize_t> shape = shape_of(array_);
  if (shape.size() < 2) {
    refuse_value("frames must have two axes or more, (..., rows, columns), not the shape " +
                 text_of(shape));
  }
  if (shape.back() == 0 || shape[shape.size() - 2] == 0) {
    refuse_value("frames of the shape " + text_of(shape) + " have no pixels");
  }
  if (array_.size() > 0 && !has_plain_rows(array_)) {
    array_ = py::module_::import("numpy").attr("ascontiguousarray")(array_);
  }
  const std::size_t axes = shape.size();
  first_.width = side_of(shape[axes - 1]);
  first_.height = side_of(shape[axes - 2]);
  first_.type = bytes ? SampleType::uint8 : SampleType::uint16;
  first_.bit_depth = layout.bit_depth.value_or(bytes ? 8 : 16);
  first_.alignment = layout.alignment;
  const auto row = static_cast<std::size_t>(shape[axes - 1]) * bytes_of(first_.type);
  first_.row_pitch = shape[axes - 2] == 1 ? static_cast<std::ptrdiff_t>(row)
                                          : array_.strides(static_cast<py::ssize_t>(axes) - 2);
  const std::size_t size = array_.size() == 0 ? 0
                                              : static_cast<std::size_t>(shape[axes - 2] - 1) *
                                                        static_cast<std::size_t>(first_.row_pitch) +
                                                    row;
  blocks_ = BlockStack(array_, 2, size);
  if (count() > 0) first_.bytes = {blocks_[0], size};
}

FrameView FrameStack::operator[](std::size_t index) const {
  FrameView frame = first_;
  frame.bytes = {blocks_[index], blocks_.block_bytes()};
  return frame;
}

std::vector<py::ssize_t> FrameStack::shape_with(const std::vector<py::ssize_t>& block) const {
  std::vector<py::ssize_t> shape = shape_of(array_);
  shape.resize(shape.size() - 2);
  shape.insert(shape.end(), block.begin(), block.end());
  return shape;
}

py::array output_array(std::string_view name, const py::handle& given, const py::dtype& dtype,
                       const std::vector<py::ssize_t>& shape, std::size_t block_axes,
                       ResultMemory& memory) {
  if (given.is_none()) return memory.array(dtype, shape);
  const std::string what = "the array for '" + std::string(name) + "'";
  const py::array array = array_of(given, what);
  if (!is_of(array, dtype)) {
    refuse_type(what + " must be of " + text_of(py::handle(dtype)) + ", not " +
                text_of(py::handle(array.dtype())));
  }
  if (shape_of(array) != shape) {
    refuse_value(what + " must have the shape " + text_of(shape) + ", not " +
                 text_of(shape_of(array)));
  }
  if (!array.writeable()) refuse_value(what + " is read-only; it must be writeable");
  if ((array.flags() & py::detail::npy_api::NPY_ARRAY_ALIGNED_) == 0) {
    refuse_value(what + " is not aligned to its elements; numpy.empty makes one that is");
  }
  if (array.size() > 0 && !in_one_piece(array, block_axes)) {
    refuse_value(what +
                 " must have rows without gaps, one below the other; its leading axes may "
                 "lie anyhow");
  }
  return array;
}

Output make_output(const FrameStack& frames, const std::string& name, const py::handle& given,
                   const py::dtype& dtype, ResultMemory& memory, std::size_t elements_a_pixel) {
  std::vector<py::ssize_t> block{frames.height(), frames.width()};
  if (elements_a_pixel > 1) block.push_back(static_cast<py::ssize_t>(elements_a_pixel));
  py::array array =
      output_array(name, given, dtype, frames.shape_with(block), block.size(), memory);
  const std::size_t bytes = pixel_count(frames.width(), frames.height()) * elements_a_pixel *
                            static_cast<std::size_t>(dtype.itemsize());
  BlockStack blocks(array, block.size(), bytes);
  return {name, std::move(array), std::move(blocks)};
}

void check_disjoint(const std::vector<Output>& outputs, const BlockStack& frames) {
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    const Output& output = outputs[i];
    if (!output.blocks.are_nested()) refuse_shared(output, "itself");
    if (can_share_memory(output.blocks, frames)) refuse_shared(output, "the frames");
    for (std::size_t other = 0; other < i; ++other) {
      if (can_share_memory(output.blocks, outputs[other].blocks)) {
        refuse_shared(output, "'" + outputs[other].name + "'");
      }
    }
  }
}

}  // namespace kv::polarization::python

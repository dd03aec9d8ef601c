// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <pybind11/numpy.h>
#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kv/image_files/frame_reader.h"
#include "kv/image_files/image_reader.h"
#include "kv/image_files/provenance.h"
#include "python/bindings/bindings.h"
#include "python/bindings/python_processor.h"
#include "python/bindings/signals.h"
#include "toolkit/api/memory_checks.h"
#include "toolkit/image_files/samples.h"

namespace kv::polarization::python {
namespace {

namespace py = pybind11;

using Path = std::filesystem::path;
using Shape = std::vector<py::ssize_t>;

/// Width, height, pixel format.
using RawTuple = std::tuple<std::int64_t, std::int64_t, std::string>;

std::optional<RawShape> raw_shape_of(const std::optional<RawTuple>& raw) {
  if (!raw) return std::nullopt;
  const auto& [width, height, name] = *raw;
  constexpr std::int64_t most = 1 << 20;
  if (width < 1 || width > most || height < 1 || height > most) {
    refuse("headerless frames of " + std::to_string(width) + " x " + std::to_string(height) +
           " pixels cannot be; both sides must be from 1 to " + std::to_string(most));
  }
  const PixelFormatTraits& traits = kPixelFormats[place_of(name, kPixelFormats, "pixel format")];
  return RawShape{static_cast<int>(width), static_cast<int>(height), traits.format};
}

/// An array of a buffer's memory, which it keeps alive.
template <class Number>
py::array array_around(Buffer<Number> buffer, const py::dtype& dtype, const Shape& shape) {
  auto kept = std::make_unique<Buffer<Number>>(std::move(buffer));
  const py::capsule owner(kept.get(),
                          [](void* memory) { delete static_cast<Buffer<Number>*>(memory); });
  const Number* const data = kept.release()->data();
  return py::array(dtype, shape, data, owner);
}

/// Frames of one file, for any number of threads.
class FrameFile {
 public:
  FrameFile(const Path& path, const std::optional<RawTuple>& raw) {
    const std::optional<RawShape> shape = raw_shape_of(raw);
    const py::gil_scoped_release unlocked;
    reader_ = open_frames(path, shape);
    count_ = reader_->count();
  }

  std::size_t count() const { return count_; }

  /// The frame, in bytes where its samples are of 8 bits, its bit depth, and the file's notes.
  py::tuple read(std::size_t index) {
    Frame frame;
    std::vector<std::string> notes;
    {
      const py::gil_scoped_release unlocked;
      const std::lock_guard lock(mutex_);
      reader_->read(index, frame);
      notes = reader_->notes();
    }
    const int bit_depth = frame.bit_depth;
    return py::make_tuple(array_of_samples(std::move(frame)), bit_depth, py::cast(notes));
  }

 private:
  static py::array array_of_samples(Frame frame) {
    const Shape shape{frame.height, frame.width};
    // A file may be wrong about its bit depth; no bit gets lost.
    if (frame.bit_depth > 8 || any_has(frame.samples, 0xff00)) {
      return array_around(std::move(frame.samples), py::dtype::of<std::uint16_t>(), shape);
    }
    py::array_t<std::uint8_t> bytes(shape);
    narrow(frame.samples, bytes.mutable_data());
    return bytes;
  }

  std::mutex mutex_;
  std::unique_ptr<FrameReader> reader_;
  std::size_t count_ = 0;
};

py::dtype dtype_of(ElementType element) {
  switch (element) {
    case ElementType::uint8:
      return py::dtype::of<std::uint8_t>();
    case ElementType::uint16:
      return py::dtype::of<std::uint16_t>();
    case ElementType::float32:
      break;
  }
  return py::dtype::of<float>();
}

std::string text_of(const Image& image) {
  return std::to_string(image.width) + " x " + std::to_string(image.height) + " pixels with " +
         std::to_string(image.channels) + " channels of " +
         std::to_string(8 * bytes_of(image.element)) + " bits";
}

void refuse_unlike(const Image& image, const Image& first, std::size_t index) {
  if (image.width == first.width && image.height == first.height &&
      image.channels == first.channels && image.element == first.element) {
    return;
  }
  refuse("image " + std::to_string(index) + " of the file has " + text_of(image) +
         ", the first one " + text_of(first) +
         ", so that one array cannot hold all; open_frames gives frames one by one");
}

/// All images of a file in one array; without the axis of images where there is one, and without
/// that of channels where they are grey.
py::array read_images(const Path& path) {
  Image first;
  const std::unique_ptr<ImageReader> reader = [&] {
    const py::gil_scoped_release unlocked;
    std::unique_ptr<ImageReader> opened = open_images(path);
    opened->read(0, first);
    return opened;
  }();
  const std::size_t count = reader->count();
  Shape shape{first.height, first.width};
  if (first.channels > 1) shape.push_back(first.channels);
  if (count == 1) return array_around(std::move(first.bytes), dtype_of(first.element), shape);

  shape.insert(shape.begin(), static_cast<py::ssize_t>(count));
  py::array images(dtype_of(first.element), shape);
  auto* const memory = static_cast<std::uint8_t*>(images.mutable_data());
  std::memcpy(memory, first.bytes.data(), first.bytes.size());
  const py::gil_scoped_release unlocked;
  Image image;
  for (std::size_t index = 1; index < count; ++index) {
    reader->read(index, image);
    refuse_unlike(image, first, index);
    std::memcpy(memory + index * image.bytes.size(), image.bytes.data(), image.bytes.size());
    throw_signal();
  }
  return images;
}

}  // namespace

void bind_image_files(py::module_& module) {
  py::class_<FrameFile>(module, "FrameFile")
      .def(py::init<const Path&, const std::optional<RawTuple>&>(), py::arg("path"), py::arg("raw"))
      .def_property_readonly("count", &FrameFile::count)
      .def("read", &FrameFile::read, py::arg("index"));
  module.def("read", &read_images, py::arg("path"));
  module.def(
      "provenance",
      [](const Path& path) {
        const std::optional<std::string> text = provenance_of(path);
        return text ? py::object(py::reinterpret_steal<py::str>(PyUnicode_DecodeUTF8(
                          text->data(), static_cast<py::ssize_t>(text->size()), "replace")))
                    : py::object(py::none());
      },
      py::arg("path"));
  std::vector<std::string> formats;
  for (const PixelFormatTraits& traits : kPixelFormats) formats.emplace_back(traits.name);
  module.attr("PIXEL_FORMATS") = py::tuple(py::cast(formats));
}

}  // namespace kv::polarization::python

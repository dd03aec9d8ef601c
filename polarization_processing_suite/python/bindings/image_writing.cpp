// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <pybind11/numpy.h>
#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "kv/image_files/image_writer.h"
#include "kv/image_files/provenance.h"
#include "kv/image_files/stack_writer.h"
#include "python/bindings/arrays.h"
#include "python/bindings/bindings.h"
#include "python/bindings/signals.h"
#include "toolkit/api/memory_checks.h"
#include "toolkit/image_files/samples.h"

namespace kv::polarization::python {
namespace {

using Path = std::filesystem::path;

/// What the axes of an array are.
struct Sides {
  std::size_t images = 1;
  bool is_stack = false;
  int height = 0;
  int width = 0;
  int channels = 1;

  std::size_t elements() const {
    return pixel_count(width, height) * static_cast<std::size_t>(channels);
  }
};

template <class Element>
bool is_of(const py::array& array) {
  return python::is_of(array, py::dtype::of<Element>());
}

[[noreturn]] void refuse_type(const py::array& array) {
  const auto cure = [&]() -> std::string {
    const py::dtype native = array.dtype().attr("newbyteorder")("=");
    for (const py::dtype& known : {py::dtype::of<std::uint16_t>(), py::dtype::of<float>()}) {
      if (native.equal(known)) return "image.astype(image.dtype.newbyteorder('=')) turns it";
    }
    switch (array.dtype().kind()) {
      case 'b':
        return "image.astype(numpy.uint8) converts it";
      case 'f':
        return "image.astype(numpy.float32) converts it";
      case 'i':
      case 'u':
        return "where its values are from 0 to 65535, image.astype(numpy.uint16) converts it";
      default:
        return "files hold whole counts or floats";
    }
  }();
  throw py::type_error("the image must be of uint8, uint16 or float32, not " +
                       std::string(py::str(py::handle(array.dtype()))) + ": " + cure);
}

int writable_side(py::ssize_t size) {
  constexpr py::ssize_t most = 1 << 24;
  if (size < 1 || size > most) {
    refuse("an image with a side of " + std::to_string(size) +
           " cannot be written; sides must be from 1 to " + std::to_string(most));
  }
  return static_cast<int>(size);
}

/// The rule by which NPY files are read, too.
bool ends_in_channels(const py::array& array) {
  if (array.ndim() != 3) return array.ndim() == 4;
  const py::ssize_t last = array.shape(2);
  return is_of<float>(array) ? last >= 2 && last <= 4 : is_of<std::uint8_t>(array) && last == 3;
}

Sides sides_of(const py::array& array) {
  if (array.ndim() < 2 || array.ndim() > 4) {
    refuse(
        "an image must have the axes (rows, columns), with one of channels behind or of "
        "images before them, not " +
        std::to_string(array.ndim()) + " axes");
  }
  Sides sides;
  py::ssize_t axis = array.ndim();
  if (ends_in_channels(array)) sides.channels = writable_side(array.shape(--axis));
  sides.width = writable_side(array.shape(--axis));
  sides.height = writable_side(array.shape(--axis));
  sides.is_stack = axis > 0;
  if (sides.is_stack) sides.images = static_cast<std::size_t>(array.shape(0));
  return sides;
}

/// Writes image_at(0), or as a stack all of them.
template <class ImageAt>
void write_each(PendingFile& file, ImageFormat format, const Sides& sides,
                const WriteOptions& options, ImageAt image_at) {
  if (!sides.is_stack) return write_image(file, format, image_at(0), options);
  const std::unique_ptr<StackWriter> stack = open_stack(file, format, sides.images, options);
  for (std::size_t index = 0; index < sides.images; ++index) {
    stack->add(image_at(index));
    throw_signal();
  }
  stack->finish();
}

/// The images of an array, which it keeps alive. They are written without the interpreter's lock.
class Content {
 public:
  Content(py::array in_one_piece, const Sides& sides, std::optional<int> bit_depth)
      : array_(std::move(in_one_piece)),
        memory_(array_.data()),
        is_float_(is_of<float>(array_)),
        is_bytes_(is_of<std::uint8_t>(array_)),
        sides_(sides),
        bit_depth_(bit_depth.value_or(is_bytes_ ? 8 : 16)) {}

  void write(PendingFile& file, ImageFormat format, const WriteOptions& options) const {
    if (is_float_) {
      write_each(file, format, sides_, options, [this](std::size_t index) {
        return FloatImage{sides_.width, sides_.height, sides_.channels, image<float>(index)};
      });
    } else if (sides_.channels == 1) {
      write_grey(file, format, options);
    } else {
      Picture picture(sides_.width, sides_.height, sides_.channels);
      std::ranges::copy(image<std::uint8_t>(0), picture.bytes.begin());
      write_image(file, format, picture, options);
    }
  }

 private:
  template <class Element>
  std::span<const Element> image(std::size_t index) const {
    const std::size_t count = sides_.elements();
    return {static_cast<const Element*>(memory_) + index * count, count};
  }

  void write_grey(PendingFile& file, ImageFormat format, const WriteOptions& options) const {
    Buffer<std::uint16_t> room(is_bytes_ ? sides_.elements() : 0);
    write_each(file, format, sides_, options, [&](std::size_t index) {
      if (is_bytes_) widen(image<std::uint8_t>(index).data(), room);
      return GreyImage{
          sides_.width, sides_.height, bit_depth_,
          is_bytes_ ? std::span<const std::uint16_t>(room) : image<std::uint16_t>(index)};
    });
  }

  py::array array_;
  const void* memory_;
  bool is_float_;
  bool is_bytes_;
  Sides sides_;
  int bit_depth_;
};

Content content_of(const py::object& image, std::optional<int> bit_depth) {
  const py::array array = array_of(image, "the image");
  const bool bytes = is_of<std::uint8_t>(array);
  const bool floats = is_of<float>(array);
  if (!bytes && !floats && !is_of<std::uint16_t>(array)) refuse_type(array);
  const Sides sides = sides_of(array);
  if (!floats && sides.channels > 1 && (!bytes || sides.channels != 3 || sides.is_stack)) {
    refuse(
        "several channels of counts are a picture, which must be uint8 of the shape (rows, "
        "columns, 3); planes of several channels must be float32");
  }
  if (bit_depth && (floats || sides.channels > 1)) {
    refuse("a bit depth is for grey images of counts alone; leave it out");
  }
  if (bit_depth && bytes && *bit_depth > 8) {
    refuse("samples of uint8 have a bit depth of 1 to 8, not " + std::to_string(*bit_depth));
  }
  const py::object require = py::module_::import("numpy").attr("require");
  return {require(array, py::none(), "CA"), sides, bit_depth};
}

std::optional<Compression> compression_of(const std::optional<std::string>& name) {
  if (!name) return std::nullopt;
  if (*name == "none") return Compression::none;
  if (*name == "fast") return Compression::fast;
  if (*name == "small") return Compression::small;
  refuse("there is no compression '" + *name + "'; there are none, fast, small");
}

void write_text(const Path& path, const std::string& text) {
  PendingFile file(path);
  file.write(text.data(), text.size());
  file.write("\n", 1);
  file.close();
  file.publish();
}

void write_file(const Path& path, const py::object& image, std::optional<int> bit_depth,
                const std::string& title, const std::string& provenance,
                const std::optional<std::string>& compression) {
  const Content content = content_of(image, bit_depth);
  const WriteOptions options{title, provenance, compression_of(compression)};
  const py::gil_scoped_release unlocked;
  const ImageFormat format = format_for(path);
  PendingFile file(path);
  content.write(file, format, options);
  file.close();
  file.publish();
  if (!provenance.empty() && !traits_of(format).keeps_text) {
    write_text(provenance_beside(path), provenance);
  }
}

}  // namespace

void bind_image_writing(py::module_& module) {
  module.def("write", &write_file, py::arg("path"), py::arg("image"), py::kw_only(),
             py::arg("bit_depth"), py::arg("title"), py::arg("provenance"), py::arg("compression"));
}

}  // namespace kv::polarization::python

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/formats/npy_reader.h"

#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "kv/polarization/fault.h"
#include "toolkit/api/shown_text.h"
#include "toolkit/image_files/formats/npy_header.h"
#include "toolkit/image_files/stored_samples.h"

namespace kv::polarization {
namespace {

constexpr const char* kFrames =
    "; frames are arrays of uint8 or uint16, rows x columns or frames x rows x columns, in C order";
constexpr const char* kImages =
    "; images are arrays of uint8, uint16 or float32, with 2 to 4 dimensions, in C order";

[[noreturn]] void refuse_array(const std::string& what, const char* wanted) {
  throw Fault(FaultKind::unsupported, "the NPY array " + what + wanted);
}

/// A product that stays at the greatest number instead of wrapping around.
std::uint64_t product(std::uint64_t a, std::uint64_t b) {
  constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
  return b != 0 && a > most / b ? most : a * b;
}

/// Where the images of an array are.
struct ArrayLayout {
  std::uint64_t count = 1;
  std::uint64_t height = 0;
  std::uint64_t width = 0;
  std::uint64_t channels = 1;
  ElementType element = ElementType::uint8;
  std::endian order = std::endian::little;
  std::uint64_t first_byte = 0;

  std::uint64_t image_bytes() const {
    return product(product(width, height), product(channels, bytes_of(element)));
  }
};

std::optional<ElementType> element_named(std::string_view type) {
  if (type == "|u1" || type == "<u1" || type == ">u1") return ElementType::uint8;
  if (type == "<u2" || type == ">u2") return ElementType::uint16;
  if (type == "<f4") return ElementType::float32;
  return std::nullopt;
}

/// Whether the last one of three sides is that of channels.
bool ends_in_channels(std::uint64_t side, ElementType element) {
  if (element == ElementType::float32) return side >= 2 && side <= 4;
  return element == ElementType::uint8 && side == 3;
}

ArrayLayout array_layout(const NpyHeader& header, bool frames_alone) {
  const char* wanted = frames_alone ? kFrames : kImages;
  const std::optional<ElementType> element = element_named(header.type);
  const bool is_float = element == ElementType::float32;
  if (!element || (frames_alone && is_float)) {
    refuse_array("has elements of type " + shown(header.type), wanted);
  }
  if (header.columns_first) refuse_array("is in Fortran order, column by column", wanted);
  const std::vector<std::uint64_t>& sides = header.shape;
  if (sides.size() < 2 || sides.size() > (frames_alone ? 3 : 4)) {
    refuse_array("has " + std::to_string(sides.size()) + " dimensions", wanted);
  }
  ArrayLayout layout;
  layout.element = *element;
  layout.order = header.type[0] == '>' ? std::endian::big : std::endian::little;
  layout.first_byte = header.first_byte;
  auto last = sides.end();
  if (sides.size() == 4 ||
      (!frames_alone && sides.size() == 3 && ends_in_channels(sides.back(), *element))) {
    layout.channels = *--last;
  }
  layout.width = *--last;
  layout.height = *--last;
  if (last != sides.begin()) layout.count = sides.front();
  return layout;
}

void check_bytes(const ArrayLayout& layout, const ByteSource& source) {
  const std::uint64_t needed = product(layout.count, layout.image_bytes());
  const std::uint64_t available = source.size() - layout.first_byte;
  if (needed == 0) {
    throw Fault(FaultKind::file, "the NPY array is empty; no side of it may be 0");
  }
  if (needed > available) {
    throw Fault(FaultKind::file, "the NPY file is truncated: its array takes " +
                                     std::to_string(needed) + " bytes, but only " +
                                     std::to_string(available) + " follow the header");
  }
}

/// Reads frames, and images of other kinds.
template <class Reader, class Target>
class NpyReader : public Reader {
 public:
  explicit NpyReader(SourcePointer source)
      : source_(std::move(source)),
        layout_(array_layout(read_npy_header(*source_), std::is_same_v<Target, Frame>)) {
    check_bytes(layout_, *source_);
  }

  std::size_t count() const override { return static_cast<std::size_t>(layout_.count); }

 private:
  void load(std::size_t index, Target& target) override {
    const std::uint64_t position = layout_.first_byte + index * layout_.image_bytes();
    fill(target, position, {"NPY", layout_.width, layout_.height, sample_bits()});
  }

  void fill(Frame& frame, std::uint64_t position, const Claim& claim) {
    reshape(frame, claim, layout_.image_bytes());
    read_samples(*source_, position, bytes_of(layout_.element), layout_.order, frame);
  }

  void fill(Image& image, std::uint64_t position, const Claim& claim) {
    if (layout_.channels > std::numeric_limits<int>::max())
      refuse_array("has too many channels", kImages);
    reshape(image, claim, static_cast<int>(layout_.channels), layout_.element,
            layout_.image_bytes());
    read_elements(*source_, position, layout_.order, image);
  }

  int sample_bits() const { return static_cast<int>(8 * bytes_of(layout_.element)); }

  SourcePointer source_;
  ArrayLayout layout_;
};

}  // namespace

std::unique_ptr<FrameReader> open_npy_frames(SourcePointer source) {
  return std::make_unique<NpyReader<FrameReader, Frame>>(std::move(source));
}

std::unique_ptr<ImageReader> open_npy_images(SourcePointer source) {
  return std::make_unique<NpyReader<ImageReader, Image>>(std::move(source));
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <string>
#include <utility>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/concatenated_stack.h"
#include "toolkit/image_files/formats/formats.h"
#include "toolkit/image_files/stored_samples.h"

namespace kv::polarization {
namespace {

/// Takes frames out of their bytes, whoever fetches those.
class RawLayout {
 public:
  explicit RawLayout(const RawShape& shape) : shape_(shape) {
    if (shape.width < 1 || shape.height < 1) {
      throw Fault(FaultKind::argument, "headerless frames of " + std::to_string(shape.width) +
                                           " x " + std::to_string(shape.height) +
                                           " pixels are empty; both sides must be 1 or more");
    }
    bytes_ = stored_bytes(shape.pixel_format, pixel_count(shape.width, shape.height));
  }

  std::size_t bytes() const { return bytes_; }

  std::string text() const {
    return std::to_string(shape_.width) + " x " + std::to_string(shape_.height) + " in " +
           std::string(traits_of(shape_.pixel_format).name);
  }

  /// Fills a frame by fetch(memory, size), which tells whether there was a frame. Bytes and words
  /// go straight to it.
  template <class Fetch>
  bool load(Frame& frame, Fetch fetch) {
    const PixelFormatTraits& traits = traits_of(shape_.pixel_format);
    frame.reshape(static_cast<std::uint64_t>(shape_.width),
                  static_cast<std::uint64_t>(shape_.height), traits.bit_depth);
    if (traits.packing == Packing::right_words || traits.packing == Packing::bytes) {
      const std::size_t sample_size = traits.packing == Packing::bytes ? 1 : 2;
      if (!fetch(place_of_stored(frame, sample_size), bytes_)) return false;
      spread_samples(frame, sample_size, std::endian::little);
      return true;
    }
    room_.resize(bytes_);
    if (!fetch(room_.data(), bytes_)) return false;
    unpack(std::as_bytes(std::span(room_)), shape_.pixel_format, frame.samples);
    return true;
  }

 private:
  RawShape shape_;
  std::size_t bytes_ = 0;
  Buffer<std::uint8_t> room_;
};

class RawReader : public FrameReader {
 public:
  RawReader(SourcePointer source, const RawShape& shape)
      : source_(std::move(source)), layout_(shape) {
    if (source_->size() % layout_.bytes() != 0) {
      throw Fault(FaultKind::file, "the file has " + std::to_string(source_->size()) +
                                       " bytes; whole frames of " + layout_.text() +
                                       " need a multiple of " + std::to_string(layout_.bytes()));
    }
  }

  std::size_t count() const override {
    return static_cast<std::size_t>(source_->size() / layout_.bytes());
  }

 private:
  void load(std::size_t index, Frame& frame) override {
    layout_.load(frame, [&](void* data, std::size_t size) {
      read_exactly(*source_, std::uint64_t{index} * size, data, size);
      return true;
    });
  }

  SourcePointer source_;
  RawLayout layout_;
};

class RawPipeReader : public FrameReader {
 public:
  RawPipeReader(StreamPointer stream, const RawShape& shape)
      : stream_(std::move(stream)), layout_(shape) {}

  std::size_t count() const override {
    throw Fault(FaultKind::state,
                "the frames of a pipe cannot be counted or chosen; read them one after the other");
  }

  bool read_next(Frame& frame) override {
    return layout_.load(frame, [this](void* data, std::size_t size) {
      stream_->read(static_cast<char*>(data), static_cast<std::streamsize>(size));
      const auto count = static_cast<std::size_t>(stream_->gcount());
      if (count == 0 || count == size) return count == size;
      throw Fault(FaultKind::file, "the pipe ended within a frame, after " + std::to_string(count) +
                                       " bytes; frames of " + layout_.text() + " have " +
                                       std::to_string(size));
    });
  }

 private:
  void load(std::size_t, Frame&) override {}

  StreamPointer stream_;
  RawLayout layout_;
};

void write_raw_grey(PendingFile& file, const GreyImage& image, const WriteOptions&) {
  write_samples(file, image.samples, bytes_a_sample(image.bit_depth), std::endian::little);
}

void write_floats(PendingFile& file, const FloatImage& image, const WriteOptions&) {
  file.write(image.values.data(), image.values.size_bytes());
}

}  // namespace

FormatFunctions raw_functions() {
  return {.write_grey = write_raw_grey,
          .write_floats = write_floats,
          .open_stack = open_concatenated<ImageFormat::raw>};
}

std::unique_ptr<FrameReader> open_raw(SourcePointer source, const RawShape& shape) {
  return std::make_unique<RawReader>(std::move(source), shape);
}

std::unique_ptr<FrameReader> open_raw_pipe(StreamPointer stream, const RawShape& shape) {
  return std::make_unique<RawPipeReader>(std::move(stream), shape);
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <bit>
#include <cstdint>
#include <span>
#include <string_view>

#include "kv/image_files/image_reader.h"
#include "kv/image_files/pending_file.h"
#include "kv/polarization/buffer.h"
#include "kv/polarization/frame.h"
#include "toolkit/image_files/byte_source.h"

namespace kv::polarization {

/// A sample takes one byte up to 8 bits, and two above.
constexpr std::size_t bytes_a_sample(int bit_depth) { return bit_depth > 8 ? 2 : 1; }

constexpr ElementType element_of(std::size_t sample_size) {
  return sample_size == 1 ? ElementType::uint8 : ElementType::uint16;
}

/// A frame or image as a header announces it.
struct Claim {
  std::string_view file;  ///< what is read, such as "PNG", for messages
  std::uint64_t width;
  std::uint64_t height;
  int bit_depth;  ///< of a frame
};

/// Gives a frame or image the size that is claimed. Throws Fault of kind file, before memory is
/// asked for, when nothing has such a size, or it is more pixels than the file can have; and of
/// kind memory.
void reshape(Frame& frame, const Claim& claim, std::uint64_t most_pixels);
void reshape(Image& image, const Claim& claim, int channels, ElementType element,
             std::uint64_t most_pixels);

/// Where in a frame its stored samples go before spread_samples() makes them whole: bytes in the
/// upper half of its memory, words where they stay.
std::uint8_t* place_of_stored(Frame& frame, std::size_t sample_size);
void spread_samples(Frame& frame, std::size_t sample_size, std::endian order);

/// Fills a frame or image from what is stored row by row without gaps, straight to its place.
/// Throws Fault of kind file when the source ends before.
void read_samples(ByteSource& source, std::uint64_t position, std::size_t sample_size,
                  std::endian order, Frame& frame);
void read_elements(ByteSource& source, std::uint64_t position, std::endian order, Image& image);

/// Turns the elements of an image that is stored in that order into the processor's own.
void order_elements(std::endian order, Image& image);

/// Reads just that many bytes. Throws Fault of kind file when the source ends before.
void read_exactly(ByteSource& source, std::uint64_t position, void* data, std::size_t size);

/// Writes samples as read_samples reads them.
void write_samples(PendingFile& file, std::span<const std::uint16_t> samples,
                   std::size_t sample_size, std::endian order);

}  // namespace kv::polarization

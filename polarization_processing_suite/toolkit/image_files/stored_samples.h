#pragma once

#include <bit>
#include <cstdint>
#include <span>
#include <string_view>

#include "kv/image_files/pending_file.h"
#include "kv/polarization/buffer.h"
#include "kv/polarization/frame.h"
#include "toolkit/image_files/byte_source.h"

namespace kv::polarization {

/// A sample takes one byte up to 8 bits, and two above.
constexpr std::size_t bytes_a_sample(int bit_depth) { return bit_depth > 8 ? 2 : 1; }

/// A frame as a header announces it.
struct Claim {
  std::string_view file;  ///< what is read, such as "PNG", for messages
  std::uint64_t width;
  std::uint64_t height;
  int bit_depth;
};

/// Gives a frame the size that is claimed. Throws Fault of kind file, before memory is asked for,
/// when that is no frame's size, or more pixels than the file can have; and of kind memory.
void reshape(Frame& frame, const Claim& claim, std::uint64_t most_pixels);

/// Fills a frame from stored samples, row by row without gaps; 16-bit ones go straight to their
/// place. `room` is memory that is used again. Throws Fault of kind file when the source ends
/// before.
void read_samples(ByteSource& source, std::uint64_t position, std::size_t sample_size,
                  std::endian order, Frame& frame, Buffer<std::uint8_t>& room);

/// Reads just that many bytes. Throws Fault of kind file when the source ends before.
void read_exactly(ByteSource& source, std::uint64_t position, void* data, std::size_t size);

/// Writes samples as read_samples reads them.
void write_samples(PendingFile& file, std::span<const std::uint16_t> samples,
                   std::size_t sample_size, std::endian order);

}  // namespace kv::polarization

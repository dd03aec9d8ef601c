// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/api/packed_frame.h"

#include <cstring>

namespace kv::polarization {
namespace {

/// From samples at any address, as the bytes of a view need not be aligned.
template <class Stored>
void unpack_row(const std::byte* row, int count, int shift, std::uint16_t* samples) {
  for (int column = 0; column < count; ++column) {
    Stored stored;
    std::memcpy(&stored, row + static_cast<std::size_t>(column) * sizeof stored, sizeof stored);
    samples[column] = static_cast<std::uint16_t>(stored >> shift);
  }
}

bool is_aligned(const void* pointer) {
  return reinterpret_cast<std::uintptr_t>(pointer) % alignof(std::uint16_t) == 0;
}

}  // namespace

FramePart packed(const FrameView& frame, const Mosaic& mosaic, Buffer<std::uint16_t>& room) {
  const std::size_t stored = bytes_of(frame.type);
  const auto row = static_cast<std::ptrdiff_t>(static_cast<std::size_t>(frame.width) * stored);
  const std::ptrdiff_t pitch = frame.row_pitch == 0 ? row : frame.row_pitch;
  const int shift =
      frame.alignment == SampleAlignment::left ? static_cast<int>(8 * stored) - frame.bit_depth : 0;
  FramePart part{nullptr, frame.width, frame.height, frame.bit_depth, mosaic};
  if (stored == 2 && pitch == row && shift == 0 && is_aligned(frame.bytes.data())) {
    part.samples = reinterpret_cast<const std::uint16_t*>(frame.bytes.data());
    return part;
  }
  room.resize(pixel_count(frame.width, frame.height));
  part.samples = room.data();
  for (int index = 0; index < frame.height; ++index) {
    const std::byte* from = frame.bytes.data() + index * pitch;
    std::uint16_t* to = room.data() + pixel_count(frame.width, index);
    if (stored == 1) {
      unpack_row<std::uint8_t>(from, frame.width, shift, to);
    } else {
      unpack_row<std::uint16_t>(from, frame.width, shift, to);
    }
  }
  return part;
}

}  // namespace kv::polarization

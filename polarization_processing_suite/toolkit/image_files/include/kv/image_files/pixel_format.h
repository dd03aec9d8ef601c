// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace kv::polarization {

/// How cameras store the samples of a grey or mosaic frame.
enum class PixelFormat : std::uint8_t {
  mono8,
  mono10,
  mono12,
  mono14,
  mono16,
  mono10_left,
  mono12_left,
  mono14_left,
  mono10p,
  mono12p,
  mono10_packed,
  mono12_packed
};

/// How samples lie in memory. p0 and p1 are two samples in a row, [hi:lo] bits of them.
enum class Packing : std::uint8_t {
  bytes,        ///< a byte each
  right_words,  ///< the low bits of a 16-bit word each, little endian, zeros above
  left_words,   ///< the high bits of a 16-bit word each, little endian, zeros below
  /// GenICam's "p": all bits one after the other, least significant first, without gaps. Four
  /// samples of 10 bits take 5 bytes, two of 12 bits take 3: p0[7:0]; p1[3:0], p0[11:8]; p1[11:4].
  bit_stream,
  /// GigE Vision's "Packed": two samples take 3 bytes, whose middle one has both samples' low bits.
  /// 12 bits: p0[11:4]; p1[3:0], p0[3:0]; p1[11:4]. 10 bits: p0[9:2]; p1[1:0], p0[1:0] at bits 4
  /// and 0; p1[9:2].
  shared_middle_byte
};

/// A line of the list of pixel formats.
struct PixelFormatTraits {
  PixelFormat format;     ///< whose line it is
  std::string_view name;  ///< as GenICam names it; left-aligned words have no name there
  int bits;               ///< stored a pixel
  int bit_depth;          ///< significant ones among them
  Packing packing;        ///< how they lie
};

/// The one list of pixel formats, in the order of PixelFormat.
inline constexpr std::array<PixelFormatTraits, 12> kPixelFormats = {{
    {PixelFormat::mono8, "Mono8", 8, 8, Packing::bytes},
    {PixelFormat::mono10, "Mono10", 16, 10, Packing::right_words},
    {PixelFormat::mono12, "Mono12", 16, 12, Packing::right_words},
    {PixelFormat::mono14, "Mono14", 16, 14, Packing::right_words},
    {PixelFormat::mono16, "Mono16", 16, 16, Packing::right_words},
    {PixelFormat::mono10_left, "Mono10Left", 16, 10, Packing::left_words},
    {PixelFormat::mono12_left, "Mono12Left", 16, 12, Packing::left_words},
    {PixelFormat::mono14_left, "Mono14Left", 16, 14, Packing::left_words},
    {PixelFormat::mono10p, "Mono10p", 10, 10, Packing::bit_stream},
    {PixelFormat::mono12p, "Mono12p", 12, 12, Packing::bit_stream},
    {PixelFormat::mono10_packed, "Mono10Packed", 12, 10, Packing::shared_middle_byte},
    {PixelFormat::mono12_packed, "Mono12Packed", 12, 12, Packing::shared_middle_byte},
}};

/// The line of a format.
constexpr const PixelFormatTraits& traits_of(PixelFormat format) {
  return kPixelFormats[static_cast<std::size_t>(format)];
}

/// The format of that name, in this spelling.
constexpr std::optional<PixelFormat> pixel_format_named(std::string_view name) {
  for (const PixelFormatTraits& traits : kPixelFormats) {
    if (traits.name == name) return traits.format;
  }
  return std::nullopt;
}

/// Bytes of that many pixels in a row. The last byte may be filled in part.
constexpr std::size_t stored_bytes(PixelFormat format, std::size_t pixels) {
  const auto bits = static_cast<std::size_t>(traits_of(format).bits);
  // Of whole bytes first, so that no product wraps around before the result does.
  return pixels / 8 * bits + (pixels % 8 * bits + 7) / 8;
}

/// Takes samples out of their packing, right-aligned. A frame is unpacked as one run of pixels: its
/// packing goes on across the ends of rows, as GenICam has it for frames without padding. Rows that
/// are padded are unpacked one by one.
///
/// Memory of both may begin anywhere and must not overlap. 5 megapixels take 1 to 2 ms. Throws
/// Fault of kind argument when there are fewer bytes than stored_bytes tells; further ones are left
/// out of account.
void unpack(std::span<const std::byte> bytes, PixelFormat format, std::span<std::uint16_t> samples);

}  // namespace kv::polarization

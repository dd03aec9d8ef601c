#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace kv::polarization {

enum class ByteOrder { little, big };

/// Fills `samples` from stored ones, which take one byte each up to 8 bits, and two bytes above.
void samples_from_bytes(std::span<const std::uint8_t> bytes, int bits, ByteOrder order,
                        std::span<std::uint16_t> samples);

std::vector<std::uint8_t> bytes_from_samples(std::span<const std::uint16_t> samples, int bits,
                                             ByteOrder order);

}  // namespace kv::polarization

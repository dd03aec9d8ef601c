#include "toolkit/image_files/sample_bytes.h"

#include <algorithm>

namespace kv::polarization {
namespace {

/// Positions of the low and the high byte within a stored sample.
struct BytePlaces {
  explicit BytePlaces(ByteOrder order) : low(order == ByteOrder::little ? 0 : 1), high(1 - low) {}
  std::size_t low;
  std::size_t high;
};

}  // namespace

void samples_from_bytes(std::span<const std::uint8_t> bytes, int bits, ByteOrder order,
                        std::span<std::uint16_t> samples) {
  if (bits <= 8) {
    std::copy_n(bytes.begin(), samples.size(), samples.begin());
    return;
  }
  const BytePlaces at(order);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    samples[i] = static_cast<std::uint16_t>(bytes[2 * i + at.low] | bytes[2 * i + at.high] << 8);
  }
}

std::vector<std::uint8_t> bytes_from_samples(std::span<const std::uint16_t> samples, int bits,
                                             ByteOrder order) {
  if (bits <= 8) {
    std::vector<std::uint8_t> bytes(samples.size());
    std::transform(samples.begin(), samples.end(), bytes.begin(),
                   [](std::uint16_t sample) { return static_cast<std::uint8_t>(sample); });
    return bytes;
  }
  std::vector<std::uint8_t> bytes(2 * samples.size());
  const BytePlaces at(order);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    bytes[2 * i + at.low] = static_cast<std::uint8_t>(samples[i] & 0xFF);
    bytes[2 * i + at.high] = static_cast<std::uint8_t>(samples[i] >> 8);
  }
  return bytes;
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/stored_samples.h"

#include <algorithm>
#include <string>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/samples.h"

namespace kv::polarization {
namespace {

/// Samples that are converted at once, within the caches.
constexpr std::size_t kPortion = 1u << 16;

/// No image that anybody looks at is larger.
constexpr std::uint64_t kMostSide = 1u << 24;

void check_claim(const Claim& claim, std::uint64_t most_pixels) {
  if (claim.height == 0 || claim.width <= most_pixels / claim.height) return;
  throw Fault(FaultKind::file, "the " + std::string(claim.file) +
                                   " is damaged or truncated: " + std::to_string(claim.width) +
                                   " x " + std::to_string(claim.height) +
                                   " pixels are announced, but its bytes hold no more than " +
                                   std::to_string(most_pixels) + "; an intact one is needed");
}

}  // namespace

void reshape(Frame& frame, const Claim& claim, std::uint64_t most_pixels) {
  check_claim(claim, most_pixels);
  try {
    frame.reshape(claim.width, claim.height, claim.bit_depth);
  } catch (const Fault& fault) {
    // It is not the caller's argument that is wrong, but the file.
    if (fault.kind() != FaultKind::argument) throw;
    throw Fault(FaultKind::file, fault.what());
  }
}

void reshape(Image& image, const Claim& claim, int channels, ElementType element,
             std::uint64_t most_pixels) {
  check_claim(claim, most_pixels);
  if (claim.width == 0 || claim.height == 0 || claim.width > kMostSide ||
      claim.height > kMostSide || channels < 1) {
    throw Fault(FaultKind::file, "an image of " + std::to_string(claim.width) + " x " +
                                     std::to_string(claim.height) + " pixels with " +
                                     std::to_string(channels) +
                                     " channels cannot be; its sides must be from 1 to " +
                                     std::to_string(kMostSide));
  }
  image.width = static_cast<int>(claim.width);
  image.height = static_cast<int>(claim.height);
  image.channels = channels;
  image.element = element;
  image.bytes.resize(pixel_count(image.width, image.height) * static_cast<std::size_t>(channels) *
                     bytes_of(element));
}

void read_exactly(ByteSource& source, std::uint64_t position, void* data, std::size_t size) {
  if (source.read(position, data, size) != size) {
    throw Fault(FaultKind::file, "the file ends within the frame; copy it again from its source");
  }
}

std::uint8_t* place_of_stored(Frame& frame, std::size_t sample_size) {
  auto* bytes = reinterpret_cast<std::uint8_t*>(frame.samples.data());
  return sample_size == 1 ? bytes + frame.samples.size() : bytes;
}

void spread_samples(Frame& frame, std::size_t sample_size, std::endian order) {
  if (sample_size == 1) {
    widen(place_of_stored(frame, sample_size), frame.samples);
  } else if (order != std::endian::native) {
    swap_bytes(frame.samples, frame.samples.data());
  }
}

void read_samples(ByteSource& source, std::uint64_t position, std::size_t sample_size,
                  std::endian order, Frame& frame) {
  read_exactly(source, position, place_of_stored(frame, sample_size),
               sample_size * frame.samples.size());
  spread_samples(frame, sample_size, order);
}

void order_elements(std::endian order, Image& image) {
  if (image.element != ElementType::uint16 || order == std::endian::native) return;
  swap_bytes(image.as<std::uint16_t>(), reinterpret_cast<std::uint16_t*>(image.bytes.data()));
}

void read_elements(ByteSource& source, std::uint64_t position, std::endian order, Image& image) {
  read_exactly(source, position, image.bytes.data(), image.bytes.size());
  order_elements(order, image);
}

void write_samples(PendingFile& file, std::span<const std::uint16_t> samples,
                   std::size_t sample_size, std::endian order) {
  if (sample_size == 2 && order == std::endian::native) {
    return file.write(samples.data(), samples.size_bytes());
  }
  Buffer<std::uint16_t> room(kPortion);
  for (std::size_t done = 0; done < samples.size(); done += kPortion) {
    const auto portion = samples.subspan(done, std::min(kPortion, samples.size() - done));
    if (sample_size == 1) {
      narrow(portion, reinterpret_cast<std::uint8_t*>(room.data()));
    } else {
      swap_bytes(portion, room.data());
    }
    file.write(room.data(), sample_size * portion.size());
  }
}

}  // namespace kv::polarization

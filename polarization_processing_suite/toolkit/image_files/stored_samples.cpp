#include "toolkit/image_files/stored_samples.h"

#include <algorithm>
#include <string>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/samples.h"

namespace kv::polarization {
namespace {

/// Samples that are converted at once, within the caches.
constexpr std::size_t kPortion = 1u << 16;

}  // namespace

void reshape(Frame& frame, const Claim& claim, std::uint64_t most_pixels) {
  if (claim.height != 0 && claim.width > most_pixels / claim.height) {
    throw Fault(FaultKind::file, "the " + std::string(claim.file) +
                                     " is damaged or truncated: " + std::to_string(claim.width) +
                                     " x " + std::to_string(claim.height) +
                                     " pixels are announced, but its bytes hold no more than " +
                                     std::to_string(most_pixels) + "; an intact one is needed");
  }
  try {
    frame.reshape(claim.width, claim.height, claim.bit_depth);
  } catch (const Fault& fault) {
    // It is not the caller's argument that is wrong, but the file.
    if (fault.kind() != FaultKind::argument) throw;
    throw Fault(FaultKind::file, fault.what());
  }
}

void read_exactly(ByteSource& source, std::uint64_t position, void* data, std::size_t size) {
  if (source.read(position, data, size) != size) {
    throw Fault(FaultKind::file, "the file ends within the frame; copy it again from its source");
  }
}

void read_samples(ByteSource& source, std::uint64_t position, std::size_t sample_size,
                  std::endian order, Frame& frame, Buffer<std::uint8_t>& room) {
  const std::size_t count = frame.samples.size();
  if (sample_size == 1) {
    room.resize(count);
    read_exactly(source, position, room.data(), count);
    widen(room.data(), frame.samples);
    return;
  }
  read_exactly(source, position, frame.samples.data(), 2 * count);
  if (order != std::endian::native) swap_bytes(frame.samples, frame.samples.data());
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

// Prints a digest of each plane for each path that this machine has, over the same frames each
// time. Builds for different systems have to print the same on one processor.
#include <cstdint>
#include <cstdio>
#include <span>

#include "every_path.h"
#include "random_case.h"

namespace kv::test {
namespace {

/// FNV-1a of 64 bits.
class Digest {
 public:
  void add(std::span<const unsigned char> bytes) {
    for (const unsigned char byte : bytes) value_ = (value_ ^ byte) * 0x100000001B3u;
  }
  unsigned long long value() const { return value_; }

 private:
  std::uint64_t value_ = 0xCBF29CE484222325u;
};

using Digests = std::array<Digest, kPlaneCount>;

/// Each geometry comes up twice.
constexpr std::uint32_t kFrames = 700;

void digest_frame(const Path& path, PolarizationProcessor& processor, const RandomCase& random_case,
                  Digests& digests) {
  const Frame& frame = random_case.frame;
  const RoundingScope rounding(random_case.rounding.value);
  processor.coefficient_store = random_case.coefficients;
  for (std::uint32_t phase = 0; phase < processor.phase_views.size(); ++phase) {
    Planes planes(frame.samples.size());
    TransformRequest request = request_for(frame, phase);
    planes.hand_to(request);
    run_path(path, processor, request, processor.phase_views[phase]);
    for (std::size_t plane = 0; plane < kPlaneCount; ++plane) {
      digests[plane].add(planes.bytes()[plane]);
    }
  }
}

void print_digests(const Path& path, PolarizationProcessor& processor) {
  Digests digests;
  for (std::uint32_t seed = 0; seed < kFrames; ++seed) {
    digest_frame(path, processor, random_case(seed), digests);
  }
  for (std::size_t plane = 0; plane < kPlaneCount; ++plane) {
    std::printf("%s %s %016llx\n", path.name, kPlaneNames[plane], digests[plane].value());
  }
}

}  // namespace
}  // namespace kv::test

int main() {
  for (const kv::test::Path& path : kv::test::kPaths) {
    PolarizationProcessor processor(kv::CpuTier::baseline);
    if (kv::test::path_available(path, processor)) kv::test::print_digests(path, processor);
  }
}

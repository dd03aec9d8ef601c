// The text of a PNG that tells what made it, found without decoding anything.
#include <algorithm>
#include <array>

#include "toolkit/image_files/formats/formats.h"
#include "toolkit/image_files/stored_samples.h"

namespace kv::polarization {
namespace {

using namespace std::string_view_literals;

constexpr std::uint64_t kSignature = 8;
constexpr std::uint64_t kHead =
    8;  ///< the size of a chunk's content, highest byte first, and its kind
constexpr std::uint64_t kChecksum = 4;

/// Keyword, no compression, its method, no language, no translated keyword.
constexpr auto kTextStart = "Provenance\0\0\0\0\0"sv;

}  // namespace

std::optional<std::string> png_provenance(ByteSource& source) {
  for (std::uint64_t position = kSignature;;) {
    std::array<std::uint8_t, kHead> head;
    read_exactly(source, position, head.data(), kHead);
    const std::string_view kind(reinterpret_cast<const char*>(head.data()) + 4, 4);
    if (kind == "IDAT" || kind == "IEND") return std::nullopt;
    const std::uint32_t size = std::uint32_t{head[0]} << 24 | std::uint32_t{head[1]} << 16 |
                               std::uint32_t{head[2]} << 8 | head[3];
    if (kind == "iTXt" && size <= kMostText) {
      std::string text(size, '\0');
      read_exactly(source, position + kHead, text.data(), size);
      if (text.starts_with(kTextStart)) return text.substr(kTextStart.size());
    }
    position += kHead + size + kChecksum;
  }
}

}  // namespace kv::polarization

#include "toolkit/image_files/formats/formats.h"
#include "toolkit/image_files/formats/png_chunks.h"

namespace kv::polarization {

std::optional<std::string> png_provenance(ByteSource& source) {
  return png_text(source, kPngProvenance);
}

}  // namespace kv::polarization

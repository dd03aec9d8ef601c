// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/formats/formats.h"
#include "toolkit/image_files/formats/png_chunks.h"

namespace kv::polarization {

std::optional<std::string> png_provenance(ByteSource& source) {
  return png_text(source, kPngProvenance);
}

}  // namespace kv::polarization

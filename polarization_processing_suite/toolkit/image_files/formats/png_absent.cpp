// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Takes the place of the PNG files in builds without libdeflate and zlib.
#include "toolkit/image_files/formats/formats.h"

namespace kv::polarization {

FormatFunctions png_functions() {
  return {.missing = "this build has no PNG support, as it was made without libdeflate and zlib"};
}

}  // namespace kv::polarization

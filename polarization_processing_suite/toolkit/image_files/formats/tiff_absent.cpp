// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Takes the place of the TIFF files in builds without libtiff.
#include "toolkit/image_files/formats/formats.h"

namespace kv::polarization {

FormatFunctions tiff_functions() {
  return {.missing = "this build has no TIFF support, as it was made without libtiff"};
}

}  // namespace kv::polarization

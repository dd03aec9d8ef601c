// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// TIFF files of any content.
#include "fuzzing/image_file.h"

namespace kv::fuzzing {

void set_up() {}

void fuzz(Choices choices) { read_file(polarization::ImageFormat::tiff, choices.rest()); }

}  // namespace kv::fuzzing

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// PNG files of any content.
#include "fuzzing/image_file.h"

namespace kv::fuzzing {

void set_up() {}

void fuzz(Choices choices) { read_file(polarization::ImageFormat::png, choices.rest()); }

}  // namespace kv::fuzzing

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kv/image_files/image_writer.h"

namespace kv::polarization {

/// Throw Fault as write_image does, for what is wrong with the image, or with the format for its
/// kind.
void check_image(ImageFormat format, const GreyImage& image);
void check_image(ImageFormat format, const FloatImage& image);
void check_image(ImageFormat format, const Picture& picture);

}  // namespace kv::polarization

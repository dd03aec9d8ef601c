// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kv/image_files/image_writer.h"

namespace kv::polarization {

void write_png_grey(PendingFile& file, const GreyImage& image, const WriteOptions& options);
void write_png_picture(PendingFile& file, const Picture& picture, const WriteOptions& options);

}  // namespace kv::polarization

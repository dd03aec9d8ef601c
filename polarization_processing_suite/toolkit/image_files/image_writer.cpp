// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/image_files/image_writer.h"

#include "toolkit/image_files/format_table.h"
#include "toolkit/image_files/image_checks.h"

namespace kv::polarization {

void write_image(PendingFile& file, ImageFormat format, const GreyImage& image,
                 const WriteOptions& options) {
  check_image(format, image);
  functions_of(format).write_grey(file, image, options);
}

void write_image(PendingFile& file, ImageFormat format, const FloatImage& image,
                 const WriteOptions& options) {
  check_image(format, image);
  functions_of(format).write_floats(file, image, options);
}

void write_image(PendingFile& file, ImageFormat format, const Picture& picture,
                 const WriteOptions& options) {
  check_image(format, picture);
  functions_of(format).write_picture(file, picture, options);
}

}  // namespace kv::polarization

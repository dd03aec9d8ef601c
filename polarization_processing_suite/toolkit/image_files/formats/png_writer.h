#pragma once

#include "kv/image_files/image_writer.h"

namespace kv::polarization {

void write_png_grey(PendingFile& file, const GreyImage& image, const WriteOptions& options);
void write_png_picture(PendingFile& file, const Picture& picture, const WriteOptions& options);

}  // namespace kv::polarization

#pragma once

#include <memory>

#include "kv/polarization/picture.h"
#include "toolkit/image_files/frame_reader.h"
#include "toolkit/image_files/image_writer.h"
#include "toolkit/image_files/input_file.h"
#include "toolkit/image_files/pending_file.h"

namespace kv::polarization {

/// Whether this build has libpng. Without it every other function here throws Fault.
bool png_available();

/// Grey PNG of 8 or 16 bits.
std::unique_ptr<FrameReader> open_png(InputFile file);

void write_png(PendingFile& file, const GreyImage& image);
void write_png(PendingFile& file, const Picture& picture);

}  // namespace kv::polarization

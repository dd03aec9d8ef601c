#ifndef KV_TOOLKIT_IMAGE_FILES_PNG_FILE_H
#define KV_TOOLKIT_IMAGE_FILES_PNG_FILE_H

#include <memory>

#include "../pictures/picture.h"
#include "frame_reader.h"
#include "image_writer.h"
#include "input_file.h"
#include "pending_file.h"

namespace kv {

/// Whether this build has libpng. Without it every other function here throws Error.
bool png_available();

/// Grey PNG of 8 or 16 bits.
std::unique_ptr<FrameReader> open_png(InputFile file);

void write_png(PendingFile& file, const GreyImage& image);
void write_png(PendingFile& file, const Picture& picture);

}  // namespace kv

#endif

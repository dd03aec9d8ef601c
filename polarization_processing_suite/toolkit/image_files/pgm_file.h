#ifndef KV_TOOLKIT_IMAGE_FILES_PGM_FILE_H
#define KV_TOOLKIT_IMAGE_FILES_PGM_FILE_H

#include <memory>

#include "../pictures/picture.h"
#include "frame_reader.h"
#include "image_writer.h"
#include "input_file.h"
#include "pending_file.h"

namespace kv {

/// Binary grey netpbm images (P5), one or several in a row. The bit depth is that of the maxval.
std::unique_ptr<FrameReader> open_pgm(InputFile file);

void write_pgm(PendingFile& file, const GreyImage& image);

/// P5 for a grey picture, P6 for one in colour.
void write_netpbm(PendingFile& file, const Picture& picture);

}  // namespace kv

#endif

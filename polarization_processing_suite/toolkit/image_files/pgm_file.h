#pragma once

#include <memory>

#include "kv/polarization/picture.h"
#include "toolkit/image_files/frame_reader.h"
#include "toolkit/image_files/image_writer.h"
#include "toolkit/image_files/input_file.h"
#include "toolkit/image_files/pending_file.h"

namespace kv::polarization {

/// Binary grey netpbm images (P5), one or several in a row. The bit depth is that of the maxval.
std::unique_ptr<FrameReader> open_pgm(InputFile file);

void write_pgm(PendingFile& file, const GreyImage& image);

/// P5 for a grey picture, P6 for one in colour.
void write_netpbm(PendingFile& file, const Picture& picture);

}  // namespace kv::polarization

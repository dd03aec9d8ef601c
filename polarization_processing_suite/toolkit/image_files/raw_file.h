#pragma once

#include <memory>

#include "toolkit/image_files/frame_reader.h"
#include "toolkit/image_files/image_writer.h"
#include "toolkit/image_files/input_file.h"
#include "toolkit/image_files/pending_file.h"

namespace kv::polarization {

/// Frames without any header, one after the other. Throws Fault when the file's size is not that of
/// a whole number of frames.
std::unique_ptr<FrameReader> open_raw(InputFile file, const RawShape& shape);

void write_raw(PendingFile& file, const GreyImage& image);

}  // namespace kv::polarization

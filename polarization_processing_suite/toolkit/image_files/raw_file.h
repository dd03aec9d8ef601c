#ifndef KV_TOOLKIT_IMAGE_FILES_RAW_FILE_H
#define KV_TOOLKIT_IMAGE_FILES_RAW_FILE_H

#include <memory>

#include "frame_reader.h"
#include "image_writer.h"
#include "input_file.h"
#include "pending_file.h"

namespace kv {

/// Frames without any header, one after the other. Throws Error when the file is no whole number of
/// frames.
std::unique_ptr<FrameReader> open_raw(InputFile file, const RawShape& shape);

void write_raw(PendingFile& file, const GreyImage& image);

}  // namespace kv

#endif

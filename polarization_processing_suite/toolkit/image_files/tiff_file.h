#pragma once

#include <memory>
#include <span>

#include "toolkit/image_files/frame_reader.h"
#include "toolkit/image_files/image_writer.h"
#include "toolkit/image_files/input_file.h"
#include "toolkit/image_files/pending_file.h"

namespace kv::polarization {

/// Whether this build has libtiff. Without it every other function here throws Fault.
bool tiff_available();

/// Grey TIFF of 8 or 16 bits; every page is a frame. The bit depth is that of the page's maximum
/// sample value, if it has one.
std::unique_ptr<FrameReader> open_tiff(InputFile file);

void write_tiff(PendingFile& file, const GreyImage& image);

/// Two interleaved float channels.
void write_tiff(PendingFile& file, int width, int height, std::span<const float> pairs);

}  // namespace kv::polarization

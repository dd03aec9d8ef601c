#pragma once

#include <tiffio.h>

#include <memory>
#include <string>

#include "toolkit/image_files/input_file.h"
#include "toolkit/image_files/pending_file.h"

namespace kv::polarization {

struct CloseTiff {
  void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffPointer = std::unique_ptr<TIFF, CloseTiff>;

/// Null when libtiff cannot open the file; last_tiff_message() gives the reason.
TiffPointer open_tiff_stream(InputFile& file);
TiffPointer open_tiff_stream(PendingFile& file);

/// libtiff's first complaint on this thread since clear_tiff_message(); empty if there was none.
const std::string& last_tiff_message();
void clear_tiff_message();

}  // namespace kv::polarization

#pragma once

#include <tiffio.h>

#include <memory>
#include <string>

#include "toolkit/image_files/input_file.h"
#include "toolkit/image_files/pending_file.h"

namespace kv {

struct CloseTiff {
  void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffPointer = std::unique_ptr<TIFF, CloseTiff>;

/// Null when libtiff can't make sense of the file; last_tiff_message() tells why.
TiffPointer open_tiff_stream(InputFile& file);
TiffPointer open_tiff_stream(PendingFile& file);

/// What libtiff complained about last on this thread since clear_tiff_message(); empty if nothing.
const std::string& last_tiff_message();
void clear_tiff_message();

}  // namespace kv

#ifndef KV_TOOLKIT_IMAGE_FILES_TIFF_STREAM_H
#define KV_TOOLKIT_IMAGE_FILES_TIFF_STREAM_H

#include <tiffio.h>

#include <memory>
#include <string>

#include "input_file.h"
#include "pending_file.h"

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

#endif

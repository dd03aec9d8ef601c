// Takes the place of the PNG files in builds without libdeflate and zlib.
#include "toolkit/image_files/formats/formats.h"

namespace kv::polarization {

FormatFunctions png_functions() {
  return {.missing = "this build has no PNG support, as it was made without libdeflate and zlib"};
}

}  // namespace kv::polarization

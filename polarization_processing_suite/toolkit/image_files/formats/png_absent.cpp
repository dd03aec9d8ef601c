// Takes the place of the PNG files in builds without libpng.
#include "toolkit/image_files/formats/formats.h"

namespace kv::polarization {

FormatFunctions png_functions() {
  return {.missing = "this build has no PNG support, as it was made without libpng"};
}

}  // namespace kv::polarization

#pragma once

#include "toolkit/image_files/format_table.h"

namespace kv::polarization {

FormatFunctions png_functions();
FormatFunctions tiff_functions();
FormatFunctions pgm_functions();
FormatFunctions npy_functions();
FormatFunctions raw_functions();

}  // namespace kv::polarization

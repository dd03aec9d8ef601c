// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "toolkit/image_files/format_table.h"

namespace kv::polarization {

FormatFunctions png_functions();
FormatFunctions tiff_functions();
FormatFunctions pgm_functions();
FormatFunctions npy_functions();
FormatFunctions raw_functions();

/// As provenance_of tells them. Throw Fault of kind file for a damaged head.
std::optional<std::string> png_provenance(ByteSource& source);
std::optional<std::string> tiff_provenance(ByteSource& source);

}  // namespace kv::polarization

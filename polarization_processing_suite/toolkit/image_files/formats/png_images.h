// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "kv/image_files/image_reader.h"
#include "toolkit/image_files/byte_source.h"

namespace kv::polarization {

std::unique_ptr<ImageReader> open_png_images(SourcePointer source);

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kv/image_files/stack_writer.h"

namespace kv::polarization {

std::unique_ptr<StackWriter> open_tiff_stack(PendingFile& file, std::size_t images,
                                             const WriteOptions& options);

}  // namespace kv::polarization

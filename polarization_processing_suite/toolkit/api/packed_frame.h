// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kv/polarization/buffer.h"
#include "kv/polarization/frame.h"
#include "toolkit/api/library_call.h"

namespace kv::polarization {

/// The samples of a frame as the library takes them: where they lie if they are so, else in `room`.
FramePart packed(const FrameView& frame, const Mosaic& mosaic, Buffer<std::uint16_t>& room);

}  // namespace kv::polarization

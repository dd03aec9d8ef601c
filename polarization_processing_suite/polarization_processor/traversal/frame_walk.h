// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "polarization_processor/traversal/frame_kernel.h"

namespace kv {

/// Takes a frame from the top down: row pairs, each of vector blocks and the columns right of them,
/// then the last rows.
void walk_frame(const TransformRequest& request, const PhaseView& view, const FrameKernel& kernel);

}  // namespace kv

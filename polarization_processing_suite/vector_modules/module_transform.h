// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "polarization_processor/records/coefficient_set.h"
#include "polarization_processor/records/transform_request.h"

namespace kv {

/// Fills the requested planes with the bytes that the library's own kernels would write.
void module_transform(const TransformRequest& request, const PhaseView& view, bool sse41_available);

}  // namespace kv

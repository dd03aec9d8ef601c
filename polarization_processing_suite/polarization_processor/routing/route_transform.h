// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "polarization_processor/records/coefficient_set.h"
#include "polarization_processor/records/transform_request.h"
#include "polarization_processor/routing/vector_backend.h"

namespace kv {

/// Fills the requested planes from the frame: by the vector module that the instance has for it, or
/// else, where that is null, by the library's own kernels. The instance itself is for the module.
void route_transform(const PolarizationProcessor& instance, const VectorBackend* backend,
                     const PhaseView& view, const TransformRequest& request, bool sse41_available);

}  // namespace kv

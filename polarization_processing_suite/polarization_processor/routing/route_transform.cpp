// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "polarization_processor/routing/route_transform.h"

#include "polarization_processor/routing/kernel_selector.h"

namespace kv {

void route_transform(const PolarizationProcessor& instance, const VectorBackend* backend,
                     const PhaseView& view, const TransformRequest& request, bool sse41_available) {
  if (backend != nullptr) {
    backend->transform(instance, request, view, sse41_available);
  } else {
    select_kernel(request, view, sse41_available);
  }
}

}  // namespace kv

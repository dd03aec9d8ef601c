// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "polarization_processor/records/coefficient_set.h"
#include "polarization_processor/records/transform_request.h"

namespace kv::test {

/// Fills the requested planes as a kernel of either form has to, from the rules alone: position by
/// position, without anything of the kernels. Places that no rule fills keep their contents.
///
/// The processor's own reciprocals are asked on the spot, since makers differ in them.
void fill_expected_planes(const TransformRequest& request, const PhaseView& view, bool sse41);

}  // namespace kv::test

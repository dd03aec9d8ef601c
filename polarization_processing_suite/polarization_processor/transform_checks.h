// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "polarization_processor/kevrinth_qrm_polarization_processor.h"
#include "polarization_processor/records/transform_request.h"

namespace kv {

/// The first fault of a call, in the order of the checks. Of the request only the caller's own
/// arguments are read: the sensor's phase, the buffers, the size, the depth and output_max_int.
ProcessorStatus check_request(const TransformRequest& request);

}  // namespace kv

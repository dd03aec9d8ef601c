// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "polarization_processor/records/transform_request.h"

namespace kv::bench {

/// The least that a transform can take: reads the input and writes every requested plane, row by
/// row, without computing anything.
void copy_streams(const TransformRequest& request);

}  // namespace kv::bench

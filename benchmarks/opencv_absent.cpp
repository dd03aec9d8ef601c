// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "opencv_baseline.h"

namespace kv::bench {

struct OpencvBaseline::Buffers {};

OpencvBaseline::OpencvBaseline() = default;
OpencvBaseline::~OpencvBaseline() = default;

const char* OpencvBaseline::missing() { return "this build has no OpenCV"; }

void OpencvBaseline::operator()(const TransformRequest&) {}

}  // namespace kv::bench

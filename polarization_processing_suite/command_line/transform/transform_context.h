// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <span>
#include <string>

#include "command_line/batch/provenance_record.h"
#include "command_line/transform/transform_plan.h"
#include "kv/calibration/calibration.h"

namespace kv::polarization {

/// What all workers of a run read, and none changes.
struct TransformContext {
  const TransformOptions& options;
  const TransformPlan& plan;
  Mosaic mosaic;
  std::optional<Calibration> calibration{};
  std::optional<ContentIdentity> calibration_identity{};
  std::string recipe_hash{};  ///< of all that decides on the results' bytes, but the inputs
  std::size_t threads = 1;    ///< for one frame
};

/// Loads the calibration, if there is one. Throws Fault.
TransformContext make_context(const TransformOptions& options, const TransformPlan& plan);

/// How results of an input that share a file were made, as JSON in one line. `page` is that of an
/// input with several ones, from 0 up; none for a stack of them.
std::string provenance_text(const TransformContext& context, const PlannedInput& planned,
                            const FrameSource& source, std::optional<std::size_t> page,
                            std::span<const Result> results, int bit_depth);

}  // namespace kv::polarization

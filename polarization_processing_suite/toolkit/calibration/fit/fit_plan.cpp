// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/calibration/fit_plan.h"

#include <utility>

#include "toolkit/calibration/fit/planned_stack.h"

namespace kv::polarization {

FitPlan::FitPlan(const FitSettings& settings, const std::vector<StackFrame>& stack,
                 const FrameAgain& read)
    : FitPlan(std::make_shared<const PlannedStack>(plan_stack(settings, stack, read))) {}

FitPlan::FitPlan(std::shared_ptr<const PlannedStack> plan) : plan_(std::move(plan)) {}

std::size_t FitPlan::frames() const noexcept { return plan_->frames.size(); }

std::vector<std::byte> FitPlan::to_bytes() const { return plan_->bytes; }

FitPlan FitPlan::from_bytes(std::span<const std::byte> bytes) {
  return FitPlan(std::make_shared<const PlannedStack>(planned_stack_of(bytes)));
}

bool FitPlan::operator==(const FitPlan& other) const noexcept {
  return plan_ == other.plan_ || *plan_ == *other.plan_;
}

}  // namespace kv::polarization

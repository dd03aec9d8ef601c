// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "python/bindings/spare_corrector.h"

#include <utility>

#include "platform/process.h"

namespace kv::polarization::python {

SpareCorrector::SpareCorrector() : process_(platform::process_number()) {}

SpareCorrector::~SpareCorrector() { leave_to_parent(); }

/// A forked process has the corrector, but not its threads: to use or end it would wait for ever.
void SpareCorrector::leave_to_parent() {
  const int process = platform::process_number();
  if (std::exchange(process_, process) != process) static_cast<void>(spare_.release());
}

std::unique_ptr<CorrectorAtWork> SpareCorrector::take(const Calibration& calibration,
                                                      const CorrectorUse& use) {
  {
    const std::lock_guard lock(mutex_);
    leave_to_parent();
    if (spare_ && spare_->use == use) return std::move(spare_);
  }
  const Mosaic mosaic{calibration.mosaic.phase, use.x_origin, use.y_origin};
  const CorrectionSettings settings{use.per_cell, use.rescue, use.pedestal, use.threads};
  return std::make_unique<CorrectorAtWork>(
      CorrectorAtWork{use, FrameCorrector(calibration, mosaic, use.width, use.height, settings)});
}

void SpareCorrector::give_back(std::unique_ptr<CorrectorAtWork> corrector) noexcept {
  const std::lock_guard lock(mutex_);
  std::swap(spare_, corrector);
}

}  // namespace kv::polarization::python

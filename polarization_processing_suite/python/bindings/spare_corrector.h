// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <compare>
#include <memory>
#include <mutex>

#include "kv/calibration/frame_corrector.h"

namespace kv::polarization::python {

/// What a corrector of a calibration is made for.
struct CorrectorUse {
  int x_origin;
  int y_origin;
  int width;
  int height;
  bool per_cell;
  bool rescue;
  std::uint16_t pedestal;
  int threads;

  bool operator==(const CorrectorUse&) const = default;
};

/// A corrector with the frame that it fills.
struct CorrectorAtWork {
  CorrectorUse use;
  FrameCorrector corrector;
  Frame corrected{};
};

/// The corrector that was used last, as making one takes longer than some frames.
class SpareCorrector {
 public:
  SpareCorrector();
  ~SpareCorrector();
  SpareCorrector(const SpareCorrector&) = delete;
  SpareCorrector& operator=(const SpareCorrector&) = delete;

  /// The spare one if it is for that use, or a new one. Throws as FrameCorrector does.
  std::unique_ptr<CorrectorAtWork> take(const Calibration& calibration, const CorrectorUse& use);
  void give_back(std::unique_ptr<CorrectorAtWork> corrector) noexcept;

 private:
  void leave_to_parent();

  std::mutex mutex_;
  std::unique_ptr<CorrectorAtWork> spare_;
  int process_;  // that its threads are of
};

}  // namespace kv::polarization::python

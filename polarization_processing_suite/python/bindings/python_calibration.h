// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include "kv/calibration/calibration.h"
#include "python/bindings/arguments.h"
#include "python/bindings/result_memory.h"
#include "python/bindings/spare_corrector.h"

namespace kv::polarization::python {

/// A calibration of Python. It never changes, so that any number of threads may use it at the same
/// time.
class PythonCalibration {
 public:
  explicit PythonCalibration(Calibration calibration)
      : calibration_(std::make_shared<const Calibration>(std::move(calibration))) {}

  const Calibration& operator*() const { return *calibration_; }
  std::shared_ptr<const Calibration> shared() const { return calibration_; }

  /// Corrected frames, their flags or None, and the bits gained.
  py::tuple apply(const py::object& frames, const py::object& out,
                  const std::optional<Origin>& origin, bool per_cell, bool rescue,
                  std::int64_t pedestal, bool left_aligned, bool flags, std::int64_t threads);

 private:
  std::shared_ptr<const Calibration> calibration_;
  SpareCorrector spare_;
  std::shared_ptr<ResultMemory> memory_ = std::make_shared<ResultMemory>();
};

}  // namespace kv::polarization::python

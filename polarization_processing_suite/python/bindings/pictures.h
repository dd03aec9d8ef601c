// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <utility>

#include "python/bindings/arrays.h"
#include "python/bindings/engine_pool.h"

namespace kv::polarization::python {

/// Pictures of single frames, (rows, columns), of a sensor.
class Pictures {
 public:
  /// The pool must outlive it.
  explicit Pictures(EnginePool& engines) : engines_(engines) {}

  /// uint8 of (rows, columns, 3). Ranges are the frame's where there is none.
  py::array picture(const py::object& frame, const std::string& kind,
                    std::optional<double> dolp_white, std::optional<double> ratio_limit,
                    bool legend) const;

  /// DoLP shown as white, and S1/S0 and S2/S0 shown in full colour.
  std::pair<double, double> ranges(const py::object& frame) const;

  /// uint16 of (rows, columns), from 0 to 65535 at full scale of the samples.
  py::array brightness(const py::object& frame) const;

 private:
  EnginePool& engines_;
};

}  // namespace kv::polarization::python

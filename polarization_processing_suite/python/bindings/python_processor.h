// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "python/bindings/engine_pool.h"
#include "toolkit/api/memory_checks.h"

namespace kv::polarization::python {

using Names = std::vector<std::string>;
using Arrays = std::vector<py::object>;  // None for one to be made

/// A processor of Python: any number of its threads may use it at the same time.
class PythonProcessor {
 public:
  /// Throws Fault as check() and Processor do.
  explicit PythonProcessor(Sensor sensor);

  // The arrays of the names, in their order: those given, or made ones where these are None.
  Arrays transform(const py::object& frames, const Names& names, const Arrays& given,
                   std::int64_t output_max, std::int64_t threads);
  Arrays maps(const py::object& frames, const Names& names, const Arrays& given,
              std::int64_t threads);

  /// Arrays of the frames' leading axes, by the names of the fields of RegionStatistics. Without
  /// rectangle and mask, of whole frames.
  py::dict region(const py::object& frames, const std::optional<std::array<int, 4>>& rectangle,
                  const py::object& mask, std::int64_t threads);

  EnginePool& engines() { return engines_; }

 private:
  Sensor sensor_;
  EnginePool engines_;
  std::shared_ptr<ResultMemory> memory_;  // that arrays of results outlive the processor with
};

/// The place of a name in a table of traits. Throws Fault of kind argument, which calls it `what`,
/// for a name that is not there.
template <class Table>
std::size_t place_of(const std::string& name, const Table& table, const std::string& what) {
  for (std::size_t place = 0; place < table.size(); ++place) {
    if (table[place].name == name) return place;
  }
  std::string known;
  for (const auto& traits : table) {
    known += (known.empty() ? "" : ", ") + std::string(traits.name);
  }
  refuse("there is no " + what + " '" + name + "'; there are " + known);
}

Arrays arrays_of(const std::vector<Output>& outputs);

/// Throws Fault of kind argument for a name that occurs twice, for none, and for another number of
/// arrays.
void check_names(const Names& names, const Arrays& given, const std::string& what);

}  // namespace kv::polarization::python

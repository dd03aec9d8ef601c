// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "python/bindings/calibration_state.h"

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <array>
#include <string>
#include <type_traits>
#include <vector>

#include "kv/calibration/calibration_check.h"
#include "toolkit/api/memory_checks.h"
#include "toolkit/calibration/file/calibration_fields.h"

namespace kv::polarization::python {
namespace {

namespace py = pybind11;

constexpr std::array<const char*, 3> kFrameKinds = {"polarized", "dark", "flat"};

template <class Value>
concept Plain = std::is_arithmetic_v<Value> || std::is_same_v<Value, std::string>;

template <class Value>
concept List = !Plain<Value> && requires(Value value) {
  value.begin();
};

/// Writes the fields of a record into a dictionary.
class DictWriter {
 public:
  explicit DictWriter(py::dict& dict) : dict_(dict) {}

  template <class Value>
  void operator()(const char* name, const Value& value) {
    dict_[name] = object_of(value);
  }
  void phase(const char* name, PolarPhase phase) { dict_[name] = cell_angles(phase)[0]; }
  void frame_kind(const char* name, FrameKind kind) {
    dict_[name] = kFrameKinds[static_cast<std::size_t>(kind)];
  }

 private:
  template <class Value>
  static py::object object_of(const Value& value) {
    if constexpr (Plain<Value>) {
      return py::cast(value);
    } else if constexpr (List<Value>) {
      py::list list;
      for (const auto& element : value) list.append(object_of(element));
      return list;
    } else {
      py::dict dict;
      DictWriter writer(dict);
      visit_fields(writer, value);
      return dict;
    }
  }

  py::dict& dict_;
};

/// Reads them again.
class DictReader {
 public:
  explicit DictReader(const py::handle& dict) : dict_(dict) {}

  template <class Value>
  void operator()(const char* name, Value& value) const {
    read(dict_[name], value);
  }
  void phase(const char* name, PolarPhase& phase) const {
    const auto known = phase_at(py::cast<int>(dict_[name]));
    if (!known) refuse("the state of the calibration has an unknown phase");
    phase = *known;
  }
  void frame_kind(const char* name, FrameKind& kind) const {
    const auto text = py::cast<std::string>(dict_[name]);
    const auto* const found = std::ranges::find(kFrameKinds, text);
    if (found == kFrameKinds.end()) {
      refuse("the state of the calibration has an unknown kind of frames");
    }
    kind = static_cast<FrameKind>(found - kFrameKinds.begin());
  }

 private:
  template <class Value>
  static void read(const py::object& object, Value& value) {
    if constexpr (Plain<Value>) {
      value = py::cast<Value>(object);
    } else if constexpr (List<Value>) {
      const auto list = py::cast<std::vector<py::object>>(object);
      if constexpr (requires { value.resize(list.size()); }) value.resize(list.size());
      if (list.size() != value.size()) refuse("the state of the calibration has a list too short");
      for (std::size_t i = 0; i < list.size(); ++i) read(list[i], value[i]);
    } else {
      DictReader reader(object);
      visit_fields(reader, value);
    }
  }

  py::handle dict_;
};

}  // namespace

py::dict fields_of(const Calibration& calibration) {
  py::dict fields;
  DictWriter writer(fields);
  visit_fields(writer, calibration);
  return fields;
}

py::dict maps_of(const Calibration& calibration, const py::object& owner) {
  py::dict maps;
  visit_maps(
      [&](const char* name, const char*, const auto& map) {
        using Number = std::remove_cvref_t<decltype(map[0])>;
        const py::array_t<Number> array({calibration.height, calibration.width}, map.data(), owner);
        array.attr("flags").attr("writeable") = false;
        maps[name] = array;
      },
      calibration.maps);
  return maps;
}

Calibration calibration_of(const py::dict& fields, const py::dict& maps) {
  Calibration calibration;
  const DictReader reader(fields);
  visit_fields(reader, calibration);
  check_sides(calibration);
  visit_maps(
      [&](const char* name, const char*, auto& map) {
        using Number = typename std::remove_cvref_t<decltype(map)>::value_type;
        const auto array = py::cast<py::array_t<Number, py::array::c_style>>(maps[name]);
        map.resize(static_cast<std::size_t>(array.size()));
        std::copy_n(array.data(), map.size(), map.begin());
      },
      calibration.maps);
  check(calibration);
  return calibration;
}

}  // namespace kv::polarization::python

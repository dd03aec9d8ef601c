// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "python/bindings/byte_mask.h"

#include <algorithm>

namespace kv::polarization::python {

ByteMask byte_mask(const py::object& object, const std::string& what) {
  py::array array = array_of(object, what);
  const char kind = array.dtype().kind();
  if (array.itemsize() != 1 || (kind != 'b' && kind != 'u')) {
    throw py::type_error(what + " must be of bool or uint8, not " +
                         std::string(py::str(py::object(array.dtype()))));
  }
  constexpr py::ssize_t greatest_side = 1 << 20;
  if (array.ndim() != 2 || array.size() == 0 || array.shape(0) > greatest_side ||
      array.shape(1) > greatest_side) {
    throw py::value_error(what + " must be an array (rows, columns) of pixels, not of the shape " +
                          std::string(py::str(array.attr("shape"))));
  }
  array = py::module_::import("numpy").attr("ascontiguousarray")(array);
  ByteMask mask;
  mask.height = static_cast<int>(array.shape(0));
  mask.width = static_cast<int>(array.shape(1));
  mask.bytes.resize(static_cast<std::size_t>(array.size()));
  std::copy_n(static_cast<const std::uint8_t*>(array.data()), mask.bytes.size(),
              mask.bytes.begin());
  return mask;
}

}  // namespace kv::polarization::python

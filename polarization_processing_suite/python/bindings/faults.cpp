// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <exception>

#include "kv/polarization/fault.h"
#include "python/bindings/bindings.h"

namespace kv::polarization::python {
namespace {

PyObject* exception_for(FaultKind kind) {
  switch (kind) {
    case FaultKind::argument:
      return PyExc_ValueError;
    case FaultKind::memory:
      return PyExc_MemoryError;
    case FaultKind::file:
      return PyExc_OSError;
    case FaultKind::unsupported:
      return PyExc_NotImplementedError;
    case FaultKind::state:
      break;
  }
  return PyExc_RuntimeError;
}

}  // namespace

void bind_faults(pybind11::module_&) {
  pybind11::register_local_exception_translator([](std::exception_ptr exception) {
    try {
      if (exception) std::rethrow_exception(exception);
    } catch (const Fault& fault) {
      // As Python itself takes paths, whose bytes need not be UTF-8.
      PyObject* const line = PyUnicode_DecodeFSDefault(fault.what());
      if (line == nullptr) return;
      PyErr_SetObject(exception_for(fault.kind()), line);
      Py_DECREF(line);
    }
  });
}

}  // namespace kv::polarization::python

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <pybind11/pybind11.h>

namespace kv::polarization::python {

/// Throws what a handler of Python's signals has raised, such as that of Ctrl-C. For long work, to
/// be called now and then without the interpreter's lock.
inline void throw_signal() {
  const pybind11::gil_scoped_acquire lock;
  if (PyErr_CheckSignals() != 0) throw pybind11::error_already_set();
}

}  // namespace kv::polarization::python

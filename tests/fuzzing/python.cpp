// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// The Python package in an interpreter within the program: its extension module is built in, its
// modules come from the sources, and python_calls.py makes the calls.

// Python's header wants to be first.
#include <Python.h>

#include "fuzzing/fuzzing.h"

extern "C" PyObject* PyInit__core();

namespace kv::fuzzing {
namespace {

/// pybind11 2.10 frees an object twice when there is no memory for the node, of 32 bytes, that
/// registers it, and ends the process where there is none for its message on wrong arguments. Its
/// records and texts are small, those of the inputs' bytes included; frames, planes and tables are
/// not.
constexpr std::size_t kRecords = 20'000;

PyObject* run_calls = nullptr;

void require_done(bool done, std::string_view what) {
  if (!done && PyErr_Occurred() != nullptr) PyErr_Print();
  require(done, what);
}

void start_interpreter() {
  // Blocks of the interpreter's own would hide from the sanitizer where each object ends.
  PyPreConfig memory;
  PyPreConfig_InitPythonConfig(&memory);
  memory.allocator = PYMEM_ALLOCATOR_MALLOC;
  require(PyStatus_Exception(Py_PreInitialize(&memory)) == 0, "Python's memory is set up");
  PyConfig config;
  PyConfig_InitPythonConfig(&config);
  config.install_signal_handlers = 0;
  config.write_bytecode = 0;
  PyConfig_SetBytesString(&config, &config.program_name, KV_PYTHON);
  require(PyStatus_Exception(Py_InitializeFromConfig(&config)) == 0, "Python starts");
  PyConfig_Clear(&config);
}

}  // namespace

void set_up() {
  require(PyImport_AppendInittab("_core", PyInit__core) == 0, "the extension module is known");
  start_interpreter();
  require_done(
      PyRun_SimpleString("import sys\n"
                         "import _core\n"
                         "sys.modules['kv_polarization._core'] = _core\n"
                         "sys.path[:0] = ['" KV_PYTHON_MODULES "', '" KV_PYTHON_CALLS "']\n") == 0,
      "the package is found");
  PyObject* const calls = PyImport_ImportModule("python_calls");
  require_done(calls != nullptr, "the calls are there");
  run_calls = PyObject_GetAttrString(calls, "run");
  require_done(run_calls != nullptr, "the calls can be made");
  spare_allocations_below(kRecords);
}

void fuzz(Choices choices) {
  const auto bytes = choices.rest();
  PyObject* const data = PyBytes_FromStringAndSize(reinterpret_cast<const char*>(bytes.data()),
                                                   static_cast<Py_ssize_t>(bytes.size()));
  require_done(data != nullptr, "Python takes the input");
  PyObject* result = nullptr;
  {
    const FailingAllocations failing;
    result = PyObject_CallOneArg(run_calls, data);
  }
  require_done(result != nullptr, "an error that is not promised");
  Py_DECREF(result);
  Py_DECREF(data);
}

}  // namespace kv::fuzzing

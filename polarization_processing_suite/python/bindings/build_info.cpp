// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <pybind11/stl.h>

#include <string>

#include "kv/image_files/image_format.h"
#include "python/bindings/bindings.h"
#include "toolkit/machine/build.h"
#include "toolkit/machine/machine.h"

namespace kv::polarization::python {
namespace {

namespace py = pybind11;

py::object text_or_none(const std::string& text) {
  if (text.empty()) return py::none();
  return py::str(text);
}

py::dict dict_of(const NamedTexts& texts) {
  py::dict dict;
  for (const auto& [name, text] : texts) dict[py::str(name)] = text;
  return dict;
}

py::dict build_info() {
  const Machine machine = look_at_machine();
  py::dict info;
  const Build& build = this_build();
  info["version"] = build.version;
  info["compiler"] = build.compiler;
  info["flags"] = build.flags;
  info["instruction_sets"] = build.instruction_sets;
  info["options"] = dict_of(build.options);
  info["libraries"] = dict_of(build.libraries);
  info["library"] = text_or_none(machine.library.string());
  info["processor"] = text_or_none(machine.processor);
  info["cores"] = machine.cores;
  info["tier"] = std::string(name_of(machine.tier));
  info["kernels"] = std::string(traits_of(machine.kernels).name);
  info["vector_module"] = text_or_none(machine.module.string());
  info["logger"] = text_or_none(machine.logger.string());
  py::dict formats;
  for (const ImageFormatTraits& format : image_formats()) {
    formats[py::str(std::string(format.name))] = format.available();
  }
  info["formats"] = formats;
  return info;
}

}  // namespace

void bind_build_info(py::module_& module) {
  module.attr("__version__") = KV_VERSION;
  module.def("build_info", &build_info);
}

}  // namespace kv::polarization::python

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/machine/machine_json.h"

#include "command_line/json_output.h"

namespace kv::polarization {
namespace {

Json json_of(const NamedTexts& texts) {
  Json json = Json::object();
  for (const auto& [name, text] : texts) json[name] = text;
  return json;
}

}  // namespace

Json json_of(const Machine& machine) {
  Json json;
  json["processor"] = machine.processor;
  json["cores"] = machine.cores;
  json["tier"] = name_of(machine.tier);
  json["kernels"] = traits_of(machine.kernels).name;
  json["library"] = json_of(machine.library);
  json["vector_module"] = json_of(machine.module);
  json["logger"] = json_of(machine.logger);
  json["logger_configuration"] = json_of(machine.logger_configuration);
  return json;
}

Json json_of(const Build& build) {
  Json json;
  json["version"] = build.version;
  json["compiler"] = build.compiler;
  json["flags"] = build.flags;
  json["instruction_sets"] = build.instruction_sets;
  json["options"] = json_of(build.options);
  json["libraries"] = json_of(build.libraries);
  return json;
}

}  // namespace kv::polarization

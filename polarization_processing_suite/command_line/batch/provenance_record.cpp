// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/batch/provenance_record.h"

#include <array>

#include "command_line/json_output.h"
#include "command_line/messages.h"
#include "platform/cpu_features.h"
#include "platform/reciprocals.h"

namespace kv::polarization {
namespace {

constexpr std::array<const char*, 3> kTierNames = {"", "avx2", "avx512"};

Json json_of_file(const std::string& name, const std::optional<ContentIdentity>& identity) {
  Json json = {{"file", name}};
  if (identity) {
    json["size"] = identity->size;
    json["xxh3"] = identity->hash;
  }
  return json;
}

}  // namespace

const MachineRecord& this_machine() {
  static const MachineRecord machine = [] {
    const auto tier = static_cast<std::size_t>(cpu_tier_of(read_cpu_registers()));
    const std::string baseline = sse41_available() ? "sse41" : "sse2";
    return MachineRecord{tier == 0 ? baseline : kTierNames[tier],
                         hash_of(platform::reciprocal_table()).substr(0, 8)};
  }();
  return machine;
}

std::string software_name() { return "kv-polarize " KV_VERSION; }

Json json_of(const ProvenanceRecord& record) {
  Json json;
  json["software"] = software_name();
  json["command"] = record.command;
  json["input"] = json_of_file(record.input, record.identity);
  if (record.page) json["page"] = *record.page;
  json["phase"] = cell_angles(record.mosaic.phase)[0];
  json["origin"] = {record.mosaic.x_origin, record.mosaic.y_origin};
  json["bit_depth"] = record.bit_depth;
  if (record.output_max != 0) json["output_max"] = record.output_max;
  if (!record.calibration.empty()) {
    json["calibration"] = json_of_file(record.calibration, record.calibration_identity);
  }
  const MachineRecord& machine = this_machine();
  json["tier"] = machine.tier;
  json["reciprocals"] = machine.reciprocals;
  return json;
}

std::filesystem::path sidecar_of(const std::filesystem::path& result) {
  std::filesystem::path sidecar = result;
  sidecar += ".json";
  return sidecar;
}

std::string sidecar_text(const std::string& record_line, const ImageShape& shape) {
  auto json = Json::parse(record_line);
  const char* kind = shape.bytes == 4 ? "float" : "uint";
  json["image"] = {{"width", shape.width},       {"height", shape.height},
                   {"channels", shape.channels}, {"type", kind + std::to_string(8 * shape.bytes)},
                   {"byte_order", "little"},     {"images", shape.images}};
  return line_of(json) + "\n";
}

std::string json_text(const std::filesystem::path& path) {
  const std::u8string text = path.generic_u8string();
  return printable(std::string(text.begin(), text.end()));
}

}  // namespace kv::polarization

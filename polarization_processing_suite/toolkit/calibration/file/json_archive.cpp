// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/file/json_archive.h"

#include <algorithm>
#include <cmath>

namespace kv::polarization {

void JsonReader::fail(const std::string& path, const std::string& right) {
  throw Fault(FaultKind::file, (path.empty() ? "the file" : path) + " must be " + right);
}

const Json& JsonReader::member(const char* name) const {
  const auto found = object_.find(name);
  if (found == object_.end()) {
    throw Fault(FaultKind::file, path_of(name) + " is missing; it must be there");
  }
  return *found;
}

void JsonReader::phase(const char* name, PolarPhase& phase) const {
  int degrees = 0;
  read(member(name), path_of(name), degrees);
  const auto found = phase_at(degrees);
  if (!found) fail(path_of(name), "0, 45, 90 or 135, not " + std::to_string(degrees));
  phase = *found;
}

void JsonReader::frame_kind(const char* name, FrameKind& kind) const {
  std::string text;
  read(member(name), path_of(name), text);
  const auto found = std::find(kFrameKindNames.begin(), kFrameKindNames.end(), text);
  if (found == kFrameKindNames.end()) fail(path_of(name), "polarized, dark or flat");
  kind = static_cast<FrameKind>(found - kFrameKindNames.begin());
}

void JsonReader::read(const Json& json, const std::string& path, bool& value) {
  if (!json.is_boolean()) fail(path, "true or false");
  value = json.get<bool>();
}

void JsonReader::read(const Json& json, const std::string& path, double& value) {
  if (!json.is_number()) fail(path, "a number");
  value = json.get<double>();
}

void JsonReader::read(const Json& json, const std::string& path, float& value) {
  double number = 0;
  read(json, path, number);
  if (!(std::abs(number) <= static_cast<double>(std::numeric_limits<float>::max()))) {
    fail(path, "a number within the range of single precision");
  }
  value = static_cast<float>(number);
}

void JsonReader::read(const Json& json, const std::string& path, std::string& value) {
  if (!json.is_string()) fail(path, "a text");
  value = json.get<std::string>();
}

}  // namespace kv::polarization

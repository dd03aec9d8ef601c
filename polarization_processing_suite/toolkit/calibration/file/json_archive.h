// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <concepts>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "kv/polarization/fault.h"
#include "toolkit/calibration/file/calibration_fields.h"

namespace kv::polarization {

using Json = nlohmann::ordered_json;

inline constexpr std::array<std::string_view, 3> kFrameKindNames = {"polarized", "dark", "flat"};

/// Writes the fields of a record into an object.
class JsonWriter {
 public:
  explicit JsonWriter(Json& object) : object_(object) {}

  template <class Value>
  void operator()(const char* name, const Value& value) {
    object_[name] = json_of(value);
  }
  void phase(const char* name, PolarPhase phase) { object_[name] = cell_angles(phase)[0]; }
  void frame_kind(const char* name, FrameKind kind) {
    object_[name] = kFrameKindNames[static_cast<std::size_t>(kind)];
  }

 private:
  template <class Value>
  static Json json_of(const Value& value) {
    if constexpr (std::floating_point<Value>) {
      return static_cast<double>(value);
    } else if constexpr (std::integral<Value> || std::same_as<Value, std::string>) {
      return value;
    } else if constexpr (requires { value.begin(); }) {
      Json array = Json::array();
      for (const auto& element : value) array.push_back(json_of(element));
      return array;
    } else {
      Json object = Json::object();
      JsonWriter writer(object);
      visit_fields(writer, value);
      return object;
    }
  }

  Json& object_;
};

/// Reads the fields of a record from an object; throws Fault of kind file for values that are
/// missing, or of another type or range than the field's.
class JsonReader {
 public:
  /// `path` is what messages call the object.
  JsonReader(const Json& object, std::string path) : object_(object), path_(std::move(path)) {
    if (!object.is_object()) fail(path_, "an object");
  }

  template <class Value>
  void operator()(const char* name, Value& value) const {
    read(member(name), path_of(name), value);
  }
  void phase(const char* name, PolarPhase& phase) const;
  void frame_kind(const char* name, FrameKind& kind) const;

  /// The object of that name within this one.
  JsonReader within(const char* name) const { return {member(name), path_of(name)}; }

 private:
  const Json& member(const char* name) const;
  std::string path_of(const std::string& name) const {
    return path_.empty() ? name : path_ + "." + name;
  }
  [[noreturn]] static void fail(const std::string& path, const std::string& right);

  static void read(const Json& json, const std::string& path, bool& value);
  static void read(const Json& json, const std::string& path, double& value);
  static void read(const Json& json, const std::string& path, float& value);
  static void read(const Json& json, const std::string& path, std::string& value);

  template <std::integral Value>
  static void read(const Json& json, const std::string& path, Value& value) {
    using Limits = std::numeric_limits<Value>;
    // What the parser takes for signed is negative; nothing here may be.
    if (!json.is_number_unsigned() ||
        json.get<std::uint64_t>() > static_cast<std::uint64_t>(Limits::max())) {
      fail(path, "a whole number from 0 to " + std::to_string(Limits::max()));
    }
    value = json.get<Value>();
  }
  template <class Record>
  static void read(const Json& json, const std::string& path, Record& record) {
    JsonReader reader(json, path);
    visit_fields(reader, record);
  }
  template <class Value, std::size_t size>
  static void read(const Json& json, const std::string& path, std::array<Value, size>& values) {
    if (!json.is_array() || json.size() != size) {
      fail(path, "a list of " + std::to_string(size));
    }
    for (std::size_t i = 0; i < size; ++i) read_element(json, path, i, values[i]);
  }
  template <class Value>
  static void read(const Json& json, const std::string& path, std::vector<Value>& values) {
    if (!json.is_array()) fail(path, "a list");
    values.resize(json.size());
    for (std::size_t i = 0; i < values.size(); ++i) read_element(json, path, i, values[i]);
  }
  template <class Value>
  static void read_element(const Json& json, const std::string& path, std::size_t i, Value& value) {
    read(json[i], path + "[" + std::to_string(i) + "]", value);
  }

  const Json& object_;
  std::string path_;
};

}  // namespace kv::polarization

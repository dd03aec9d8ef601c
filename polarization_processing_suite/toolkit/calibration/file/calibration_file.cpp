// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/calibration/calibration_file.h"

#include <memory>
#include <string>
#include <vector>

#include "kv/calibration/calibration_check.h"
#include "kv/image_files/pending_file.h"
#include "kv/polarization/fault.h"
#include "toolkit/api/memory_checks.h"
#include "toolkit/api/memory_faults.h"
#include "toolkit/api/shown_text.h"
#include "toolkit/calibration/file/json_archive.h"
#include "toolkit/calibration/file/npy_map.h"
#include "toolkit/image_files/byte_source.h"

namespace kv::polarization {
namespace {

constexpr const char* kFormat = "calibration of a polarization sensor";
constexpr int kVersion = 1;

// Far above what a list of frames takes; far below what memory has.
constexpr std::uint64_t kGreatestText = std::uint64_t{64} << 20;

constexpr const char* kUnits =
    "angles in degrees, counter-clockwise from the rows; samples in counts; noise.gain in counts "
    "per electron; noise.read_noise in electrons; gains relative to their mean; a pixel reads "
    "black + gain / 2 (S0 + diattenuation (cos 2a S1 + sin 2a S2))";

template <class Number>
constexpr const char* type_name(const Buffer<Number>&) {
  return std::is_same_v<Number, float> ? "float32" : "uint8";
}

std::string text_of(const Json& json) {
  try {
    return json.dump(2) + "\n";
  } catch (const Json::exception&) {
    refuse("a text of the calibration, such as the name of a frame, is not UTF-8; it must be");
  }
}

Json parsed(const std::filesystem::path& path) {
  const SourcePointer file = source_of(open_stream(path));
  if (file->size() > kGreatestText) {
    throw Fault(FaultKind::file, "it has " + std::to_string(file->size()) +
                                     " bytes; a calibration has some thousand");
  }
  std::string text(static_cast<std::size_t>(file->size()), '\0');
  text.resize(file->read(0, text.data(), text.size()));
  try {
    return Json::parse(text);
  } catch (const Json::parse_error& error) {
    throw Fault(FaultKind::file, "it is damaged at byte " + std::to_string(error.byte) +
                                     "; it must be JSON, as it was saved");
  } catch (const Json::exception&) {
    throw Fault(FaultKind::file, "it has a number beyond any range; it must be as it was saved");
  }
}

void check_format(const JsonReader& reader) {
  std::string format;
  int version = 0;
  reader("format", format);
  if (format != kFormat) {
    throw Fault(FaultKind::file,
                "its format is '" + shown(format) + "'; it must be '" + std::string(kFormat) + "'");
  }
  reader("version", version);
  if (version != kVersion) {
    throw Fault(FaultKind::file, "it is of version " + std::to_string(version) +
                                     "; this software reads version " + std::to_string(kVersion));
  }
}

/// Does work on a file, whose name the line of a Fault then begins with.
template <class Work>
decltype(auto) with_name(const std::string& name, Work work) {
  try {
    return work();
  } catch (const Fault& fault) {
    if (fault.kind() == FaultKind::memory) throw;
    throw Fault(FaultKind::file, name + ": " + fault.what());
  }
}

template <class Number>
void load_map(const JsonReader& reader, const std::filesystem::path& folder, int width, int height,
              Buffer<Number>& map) {
  std::string name;
  std::string type;
  std::string sum;
  reader("file", name);
  reader("type", type);
  reader("sha256", sum);
  const std::filesystem::path path(name);
  if (name.empty() || path.filename() != path || name == "." || name == "..") {
    throw Fault(FaultKind::file, "its map '" + shown(name) + "' must be a file beside it");
  }
  with_name("its map " + shown(name), [&] {
    if (type != type_name(map)) {
      throw Fault(FaultKind::file, "it is of " + shown(type) + "; it must be of " + type_name(map));
    }
    if (read_npy_map(folder / path, width, height, map) != sum) {
      throw Fault(FaultKind::file,
                  "it was changed or is of another calibration; it must be the one that was saved "
                  "with it");
    }
  });
}

Calibration load(const std::filesystem::path& file) {
  const Json json = parsed(file);
  const JsonReader reader(json, "");
  check_format(reader);
  Calibration calibration;
  visit_fields(reader, calibration);
  check_sides(calibration);
  const JsonReader maps = reader.within("maps");
  visit_maps(
      [&](const char* name, const char*, auto& map) {
        load_map(maps.within(name), file.parent_path(), calibration.width, calibration.height, map);
      },
      calibration.maps);
  check(calibration);
  return calibration;
}

}  // namespace

void save_calibration(const Calibration& calibration, const std::filesystem::path& file) {
  with_memory_faults([&] {
    check(calibration);
    if (file.extension() != ".json") {
      refuse("a calibration cannot be saved as " + file.string() + "; its name must end in .json");
    }
    Json json = {{"format", kFormat}, {"version", kVersion}, {"units", kUnits}};
    JsonWriter writer(json);
    visit_fields(writer, calibration);
    std::vector<std::unique_ptr<PendingFile>> files;
    visit_maps(
        [&](const char* name, const char* unit, const auto& map) {
          std::filesystem::path path = file;
          path.replace_extension("." + std::string(name) + ".npy");
          files.push_back(std::make_unique<PendingFile>(path));
          const std::string sum =
              write_npy_map(*files.back(), map, calibration.width, calibration.height);
          json["maps"][name] = {{"file", path.filename().string()},
                                {"type", type_name(map)},
                                {"unit", unit},
                                {"sha256", sum}};
        },
        calibration.maps);
    const std::string text = text_of(json);
    files.push_back(std::make_unique<PendingFile>(file));
    files.back()->write(text.data(), text.size());
    for (const auto& pending : files) pending->close();
    for (const auto& pending : files) pending->publish();
  });
}

Calibration load_calibration(const std::filesystem::path& file) {
  return with_memory_faults([&] { return with_name(file.string(), [&] { return load(file); }); });
}

}  // namespace kv::polarization

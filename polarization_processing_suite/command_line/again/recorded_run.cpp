// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/again/recorded_run.h"

#include <algorithm>
#include <array>

#include "command_line/batch/file_hash.h"
#include "command_line/batch/provenance_record.h"
#include "command_line/path_text.h"
#include "kv/image_files/provenance.h"
#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

constexpr const char* kUnknown =
    "the file does not tell how it was made; only results of kv-polarize transform do";

/// The options that results record, with a value or without. A stranger's file may ask for no
/// others, as some write files.
constexpr std::array<const char*, 15> kValueOptions = {
    "--phase",  "--origin",      "--bit-depth", "--width",      "--height",
    "--planes", "--raw-format",  "--pictures",  "--format",     "--dolp-white",
    "--stack",  "--calibration", "--pages",     "--output-max", "--compression"};
constexpr std::array<const char*, 2> kFlags = {"--no-planes", "--no-pictures"};

/// Whether the words are transform, an input, and options of these.
bool is_harmless(const std::vector<std::string>& words) {
  if (words.size() < 2 || words[0] != "transform" || words[1].starts_with("-") ||
      words[1].starts_with("@")) {
    return false;
  }
  for (std::size_t i = 2; i < words.size(); ++i) {
    if (std::ranges::find(kFlags, words[i]) != kFlags.end()) continue;
    if (std::ranges::find(kValueOptions, words[i]) == kValueOptions.end()) return false;
    if (++i == words.size() || words[i].starts_with("-")) return false;
  }
  return true;
}

}  // namespace

RecordedRun::RecordedRun(const std::filesystem::path& result) {
  if (!std::filesystem::exists(result)) {
    throw Fault(FaultKind::file, "there is no file " + text_of(result));
  }
  const auto text = provenance_of(result);
  if (!text) throw Fault(FaultKind::unsupported, kUnknown);
  try {
    record_ = Json::parse(*text);
    record_.at("software").get<std::string>();
    record_.at("input").at("file").get<std::string>();
    command_ = record_.at("command").get<std::vector<std::string>>();
  } catch (const Json::exception&) {
    throw Fault(FaultKind::unsupported, kUnknown);
  }
  if (!is_harmless(command_)) throw Fault(FaultKind::unsupported, kUnknown);
}

void RecordedRun::check_input() const {
  check_file("input", "frames");
  check_file("calibration", "calibration");
}

void RecordedRun::check_file(const char* key, const char* what) const {
  if (!record_.contains(key)) return;
  const Json& recorded = record_[key];
  const std::string name = recorded.value("file", "");
  if (!recorded.contains("xxh3")) {
    throw Fault(FaultKind::unsupported,
                "its " + std::string(what) + " came through a pipe, and cannot be read again");
  }
  const std::filesystem::path file = path_of(name);
  if (!std::filesystem::exists(file)) {
    throw Fault(FaultKind::file, "its " + std::string(what) + ", " + name +
                                     ", are not there; name the folder that this is relative to, "
                                     "by --from");
  }
  if (identity_of(file).hash != recorded.value("xxh3", "")) {
    throw Fault(FaultKind::file, "its " + std::string(what) + ", " + name +
                                     ", have changed since; the result cannot be made again");
  }
}

std::vector<std::string> RecordedRun::differences_from_here() const {
  std::vector<std::string> sentences;
  const std::string software = record_.value("software", "");
  if (software != software_name()) {
    sentences.push_back("it was made by " + software + ", and this is " + software_name());
  }
  const MachineRecord& machine = this_machine();
  if (record_.value("reciprocals", "") != machine.reciprocals) {
    sentences.emplace_back(
        "it was made on a processor whose approximate reciprocals differ from this one's: levels "
        "that lie between two numbers may be rounded otherwise");
  }
  if (record_.value("tier", "") != machine.tier) {
    sentences.push_back("it was made on a processor of the tier " + record_.value("tier", "") +
                        ", and this one has " + machine.tier +
                        ": that changes what the file records, and no pixel");
  }
  return sentences;
}

}  // namespace kv::polarization

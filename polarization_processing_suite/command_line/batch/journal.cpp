// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/batch/journal.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <optional>
#include <utility>

#include "command_line/batch/provenance_record.h"
#include "command_line/json_output.h"
#include "command_line/path_text.h"
#include "kv/image_files/pending_file.h"
#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

std::string journal_line(const JournalEntry& entry) {
  Json results = Json::array();
  for (const JournalFile& file : entry.results) {
    results.push_back({{"file", file.name}, {"size", file.size}});
  }
  const Json json = {{"input", entry.input},        {"size", entry.identity.size},
                     {"xxh3", entry.identity.hash}, {"recipe", entry.recipe},
                     {"frames", entry.frames},      {"results", std::move(results)}};
  return line_of(json) + "\n";
}

/// None for a line that is damaged.
std::optional<JournalEntry> entry_of(const std::string& line) {
  try {
    const Json json = Json::parse(line);
    JournalEntry entry{json.at("input"),
                       {json.at("size"), json.at("xxh3")},
                       json.at("recipe"),
                       json.at("frames"),
                       {}};
    for (const Json& file : json.at("results")) {
      entry.results.push_back({file.at("file"), file.at("size")});
    }
    return entry;
  } catch (const Json::exception&) {
    return std::nullopt;
  }
}

}  // namespace

Journal::Journal(std::filesystem::path folder) : folder_(std::move(folder)) { read(); }

void Journal::read() {
  std::ifstream stream(folder_ / kJournalName, std::ios::binary);
  for (std::string line; std::getline(stream, line);) {
    ends_within_line_ = stream.eof();
    if (auto entry = entry_of(line)) take(std::move(*entry));
  }
  std::error_code unknown;
  const bool opened = stream.is_open() || !std::filesystem::exists(folder_ / kJournalName, unknown);
  if (!opened || stream.bad()) {
    throw Fault(FaultKind::file, "the journal " + (folder_ / kJournalName).string() +
                                     " cannot be read to its end; its permissions, its disk, or a "
                                     "lack of memory, are in the way");
  }
}

void Journal::take(JournalEntry entry) {
  JournalEntry& taken = entries_[entry.input];
  taken = std::move(entry);
  for (const JournalFile& file : taken.results) {
    JournalEntry*& owner = owners_[file.name];
    if (owner != nullptr && taken.recipe.empty()) continue;
    if (owner != nullptr && owner != &taken) owner->recipe.clear();
    owner = &taken;
  }
}

std::string Journal::owner_of(const std::string& name) const {
  const std::lock_guard lock(mutex_);
  const auto found = owners_.find(name);
  return found == owners_.end() ? "" : found->second->input;
}

bool Journal::is_done(const std::string& input, const ContentIdentity& identity,
                      const std::string& recipe) const {
  const std::lock_guard lock(mutex_);
  const auto found = entries_.find(input);
  if (found == entries_.end()) return false;
  const JournalEntry& entry = found->second;
  if (entry.identity != identity || entry.recipe != recipe) return false;
  for (const JournalFile& file : entry.results) {
    std::error_code missing;
    if (std::filesystem::file_size(folder_ / path_of(file.name), missing) != file.size) {
      return false;
    }
  }
  return true;
}

void Journal::release(const std::vector<std::string>& names) {
  const std::lock_guard lock(mutex_);
  for (const std::string& name : names) {
    const auto found = owners_.find(name);
    if (found == owners_.end() || found->second->recipe.empty()) continue;
    found->second->recipe.clear();
    append(*found->second);
  }
}

void Journal::add(const JournalEntry& entry) {
  const std::lock_guard lock(mutex_);
  append(entry);
  take(entry);
}

void Journal::append(const JournalEntry& entry) {
  const std::string line =
      (std::exchange(ends_within_line_, false) ? "\n" : "") + journal_line(entry);
  // Opened for each line: another process may have tidied the journal meanwhile.
  std::ofstream stream;
  stream.rdbuf()->pubsetbuf(nullptr, 0);  // one write of the system for a line
  stream.open(folder_ / kJournalName, std::ios::binary | std::ios::app);
  if (!stream.write(line.data(), static_cast<std::streamsize>(line.size()))) {
    throw Fault(FaultKind::file, "the journal " + (folder_ / kJournalName).string() +
                                     " cannot be written; the results are complete, but a later "
                                     "run will make them again");
  }
}

bool Journal::owns_any(const JournalEntry& entry) const {
  return std::ranges::any_of(
      entry.results, [&](const JournalFile& result) { return owners_.at(result.name) == &entry; });
}

void Journal::tidy() {
  entries_.clear();
  owners_.clear();
  read();
  if (entries_.empty()) {
    std::error_code ignored;
    std::filesystem::remove(folder_ / kJournalName, ignored);
    return;
  }
  PendingFile file(folder_ / kJournalName);
  for (const auto& [input, entry] : entries_) {
    if (!owns_any(entry)) continue;
    const std::string line = journal_line(entry);
    file.write(line.data(), line.size());
  }
  file.sync();
  file.close();
  file.publish();
}

}  // namespace kv::polarization

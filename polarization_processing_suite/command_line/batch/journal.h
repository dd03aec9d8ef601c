// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "command_line/batch/file_hash.h"

namespace kv::polarization {

/// The journal's name in the folder of results.
inline constexpr const char* kJournalName = "kv-polarize.journal";

struct JournalFile {
  std::string name;  ///< relative to the journal's folder
  std::uint64_t size = 0;
};

/// An input that was done completely.
struct JournalEntry {
  std::string input;
  ContentIdentity identity;
  std::string recipe;  ///< hash of all else that decides on the results' bytes; empty when they are
                       ///< no longer its own, or not all of them
  std::size_t frames = 0;
  std::vector<JournalFile> results;
};

/// What was done in a folder of results, a line of JSON for each input. A line is added when all
/// results of an input have their names, so that whatever a killed run was about is done again.
/// A file is the result of the last input that took it. Several processes may add lines to one
/// journal.
class Journal {
 public:
  /// Reads what is there. A torn line, the last one of a run that was killed, counts for nothing.
  explicit Journal(std::filesystem::path folder);

  /// Whether the journal says that it is done, and its results still have their sizes.
  bool is_done(const std::string& input, const ContentIdentity& identity,
               const std::string& recipe) const;

  /// Whether a run has written that file, by its name relative to the folder.
  bool has_result(const std::string& name) const { return owners_.contains(name); }

  /// The input that the file is the result of; empty when no run has written it.
  std::string owner_of(const std::string& name) const;

  /// To be called before those files get a new content, so that nobody takes them for what they
  /// were, however the run ends. From any thread. Throws Fault of kind file.
  void release(const std::vector<std::string>& names);

  /// Any thread may add entries. Throws Fault of kind file.
  void add(const JournalEntry& entry);

  /// Puts the lines in the order of their inputs' names, so that equal results have equal journals;
  /// removes a journal without any. The caller sees to it that nobody else adds lines.
  void tidy();

 private:
  void read();
  void take(JournalEntry entry);
  void append(const JournalEntry& entry);
  bool owns_any(const JournalEntry& entry) const;

  std::filesystem::path folder_;
  std::map<std::string, JournalEntry> entries_;  ///< by input
  std::map<std::string, JournalEntry*> owners_;  ///< of results
  mutable std::mutex mutex_;
  bool ends_within_line_ = false;
};

}  // namespace kv::polarization

#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <mutex>
#include <set>
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
  std::string recipe;  ///< hash of all else that decides on the results' bytes
  std::size_t frames = 0;
  std::vector<JournalFile> results;
};

/// What was done in a folder of results, a line of JSON for each input. A line is added when all
/// results of an input have their names, so that whatever a killed run was about is done again.
/// Several processes may add lines to one journal.
class Journal {
 public:
  /// Reads what is there. A torn line, the last one of a run that was killed, counts for nothing.
  explicit Journal(std::filesystem::path folder);

  /// Whether the journal says that it is done, and its results still have their sizes.
  bool is_done(const std::string& input, const ContentIdentity& identity,
               const std::string& recipe) const;

  /// Whether a run has written that file, by its name relative to the folder.
  bool has_result(const std::string& name) const { return results_.contains(name); }

  std::size_t frames_of(const std::string& input) const;

  /// Any thread may add entries. Throws Fault of kind file.
  void add(const JournalEntry& entry);

  /// Puts the lines in the order of their inputs' names, so that equal results have equal journals;
  /// removes a journal without any. The caller sees to it that nobody else adds lines.
  void tidy();

 private:
  void read();

  std::filesystem::path folder_;
  std::map<std::string, JournalEntry> entries_;  ///< by input
  std::set<std::string> results_;
  mutable std::mutex mutex_;
  bool ends_within_line_ = false;
};

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "command_line/options/option_record.h"

// NOLINTNEXTLINE(readability-identifier-naming): CLI11's.
namespace CLI {
class App;
}

namespace kv::polarization {

/// Takes an option's value as it was written. Throws BadValue.
using Setter = std::function<void(const std::string&)>;

/// The options of a command. They follow the common habits: the last one wins, --no-NAME undoes
/// what can be undone, --NAME=? lists values, and nothing is taken from the environment.
class OptionList {
 public:
  explicit OptionList(CLI::App& command) : command_(command) {}

  /// An option with a value. `unset`, if there is one, is what --no-NAME does.
  void add(OptionRecord record, const Setter& set, const std::function<void()>& unset = nullptr);

  /// Sets a flag; --no-NAME clears it.
  void add_flag(OptionRecord record, bool& flag);

  /// One argument without a dash, which may be left out unless it is required.
  void add_argument(OptionRecord record, const Setter& set);

  /// Arguments without a dash, as many as there are between these numbers.
  void add_arguments(OptionRecord record, std::vector<std::string>& arguments, int least, int most);

  const std::vector<OptionRecord>& records() const { return records_; }

  /// Whether the command line says it, be it undone later.
  bool given(const std::string& key) const;

 private:
  CLI::App& command_;
  std::vector<OptionRecord> records_;
};

}  // namespace kv::polarization

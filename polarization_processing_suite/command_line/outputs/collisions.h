// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "command_line/inputs/file_identity.h"
#include "command_line/inputs/input_list.h"
#include "command_line/outputs/hash_set.h"

namespace kv::polarization {

/// Finds out whether two results of a run would have the same name, or one that of an input, before
/// anything is written. Keeps a hash of 64 bits a name, so that a run of millions stays small, and
/// holds the names themselves against each other where hashes are equal. Names that differ in the
/// case of ASCII letters are the same on systems whose file systems take them so. A name costs
/// about a microsecond. For one thread at a time.
class NameRegister {
 public:
  /// Gives the results of an input once more, all that were added for it or more.
  using ResultsOf = std::function<std::vector<std::filesystem::path>(std::size_t owner)>;

  /// Owners are indices of these inputs, which must outlive it.
  NameRegister(std::span<const Input> inputs, ResultsOf results_of);

  /// Takes a result of an input. Throws Fault of kind argument, which names both inputs, when an
  /// earlier result has its name, or when it would replace an input.
  void add(const std::filesystem::path& result, std::size_t owner);

 private:
  void refuse_input(const std::string& place, const std::filesystem::path& result,
                    std::size_t owner);
  void refuse_earlier(const std::string& place, const std::filesystem::path& result,
                      std::size_t owner);
  std::string name_of(std::size_t owner) const;

  std::span<const Input> inputs_;
  ResultsOf results_of_;
  FileIdentity identity_;
  HashSet input_hashes_;
  HashSet result_hashes_;
  std::size_t last_owner_ = 0;
};

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <string>
#include <unordered_map>

namespace kv::polarization {

/// Tells whether two paths mean the same file. It remembers the folders that it has seen, so that a
/// file costs little; folders must not be moved or linked anew meanwhile.
class FileIdentity {
 public:
  /// A text that paths of the same name in the same folder have in common. The name itself may be a
  /// link: this is where a file is replaced. Without a difference of case where file systems know
  /// none; the file need not exist.
  std::string place_of(const std::filesystem::path& path);

  /// The place of the file that a path leads to in the end.
  std::string file_of(const std::filesystem::path& path);

 private:
  std::unordered_map<std::string, std::string> folders_;  // as they are named: as they truly are
};

}  // namespace kv::polarization

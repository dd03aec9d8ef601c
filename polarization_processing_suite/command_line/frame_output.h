#pragma once

#include <deque>
#include <filesystem>
#include <functional>
#include <vector>

#include "toolkit/image_files/pending_file.h"

namespace kv {

/// The files of one frame: none appears before all of them are written.
class FrameOutput {
 public:
  /// Takes note of a file to write. The work runs on any thread, beside that of other files.
  void add(const std::filesystem::path& path, std::function<void(PendingFile&)> work);

  /// Writes the files on all cores, as their compression takes longer than everything else, and
  /// then gives them their names. Throws the first failure.
  void write();

 private:
  std::deque<PendingFile> files_;
  std::vector<std::function<void(PendingFile&)>> work_;
};

}  // namespace kv

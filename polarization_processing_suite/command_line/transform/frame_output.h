#pragma once

#include <deque>
#include <filesystem>
#include <functional>
#include <vector>

#include "kv/image_files/pending_file.h"

namespace kv::polarization {

/// The files of one frame. None appears before all of them are written.
class FrameOutput {
 public:
  /// Adds a file. Its work may run on any thread, at the same time as that of other files.
  void add(const std::filesystem::path& path, std::function<void(PendingFile&)> work);

  /// Writes all files on all cores, as their compression takes longer than everything else, and
  /// then gives them their names. Throws a failure of any of them.
  void write();

 private:
  std::deque<PendingFile> files_;
  std::vector<std::function<void(PendingFile&)>> work_;
};

}  // namespace kv::polarization

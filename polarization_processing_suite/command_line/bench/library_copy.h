// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <string>

#include "kevrinth_qrm_polarization_processor.h"
#include "kv/polarization/frame.h"
#include "kv/polarization/planes.h"
#include "platform/optional_library.h"

namespace kv::polarization {

/// A folder of its own in the system's place for temporary files; removed with all it holds.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

/// A second copy of the processing library, loaded from a folder in which no vector module lies, so
/// that its frames are computed within the library. It must be made before anything else has opened
/// the library, as a loader gives every copy the modules that are loaded already.
///
/// On Windows modules are looked for beside the program, whose folder holds them: there the copy is
/// not usable.
class LibraryCopy {
 public:
  LibraryCopy();
  ~LibraryCopy();
  LibraryCopy(const LibraryCopy&) = delete;
  LibraryCopy& operator=(const LibraryCopy&) = delete;

  /// Why it would not tell what frames cost within the library; empty when it would.
  const std::string& obstacle() const { return obstacle_; }

  /// One call of the library, on this thread. The planes are of the frame's size, which must be one
  /// that Processor takes.
  void transform(const Frame& frame, const PlaneViews& planes) const;

 private:
  void open();

  TemporaryFolder folder_;
  platform::LibraryHandle library_ = nullptr;
  PolarizationProcessor* handle_ = nullptr;
  decltype(&kv_polarization_processor_transform) transform_ = nullptr;
  std::string obstacle_;
};

}  // namespace kv::polarization

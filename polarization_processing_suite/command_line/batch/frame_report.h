// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "command_line/batch/journal.h"

namespace kv::polarization {

/// What became of a frame, or of an input as a whole.
struct FrameReport {
  enum class Outcome : std::uint8_t { done, failed, skipped, end_of_pipe };

  std::size_t input = 0;
  std::size_t place = 0;      ///< among the frames of the input that are wanted
  bool last_of_input = true;  ///< no further report of this input has a greater place
  std::filesystem::path file{};
  std::string page{};  ///< such as ", page 2"; empty where a file has one frame
  Outcome outcome = Outcome::done;
  std::size_t frames = 1;  ///< that it is about: all of an input that cannot be opened, or is done
  std::string failure{};   ///< empty for a frame that failed with another one
  std::vector<std::string> warnings{};
  std::vector<JournalFile> results{};
  double transform_seconds = 0;
  double pixels = 0;  ///< of frames whose planes were computed
  double clipped_pixels = 0;

  std::string name() const;  ///< of file and page, for people
};

}  // namespace kv::polarization

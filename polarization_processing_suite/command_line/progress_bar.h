#pragma once

#include <cstddef>

namespace kv::polarization {

/// One line on the error stream that shows how many files are done, and vanishes in the end. There
/// is one only on a terminal and for more than one file.
class ProgressBar {
 public:
  explicit ProgressBar(std::size_t files);
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  /// `files_done` may hold a fraction, for the pages of a file.
  void show(double files_done);

  /// Removes the line, to make room for a message.
  void hide();

 private:
  std::size_t files_;
  bool enabled_;
  bool visible_ = false;
};

}  // namespace kv::polarization

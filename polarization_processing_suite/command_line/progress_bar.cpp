#include "command_line/progress_bar.h"

#include <iostream>
#include <string>

#include "platform/process.h"

namespace kv::polarization {

ProgressBar::ProgressBar(std::size_t files)
    : files_(files), enabled_(files > 1 && platform::error_stream_is_terminal()) {}

ProgressBar::~ProgressBar() { hide(); }

void ProgressBar::show(double files_done) {
  if (!enabled_) return;
  constexpr std::size_t cells = 40;
  const auto full = static_cast<std::size_t>(files_done / static_cast<double>(files_) * cells);
  std::cerr << "\r[" << std::string(full, '#') << std::string(cells - full, '.') << "] "
            << static_cast<std::size_t>(files_done) << " of " << files_ << " files" << std::flush;
  visible_ = true;
}

void ProgressBar::hide() {
  if (!visible_) return;
  std::cerr << "\r" << std::string(78, ' ') << "\r" << std::flush;
  visible_ = false;
}

}  // namespace kv::polarization

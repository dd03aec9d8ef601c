// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/progress_line.h"

#include <algorithm>
#include <iostream>
#include <utility>

#include "platform/process.h"

namespace kv::polarization {

ProgressLine::ProgressLine(bool wanted, std::string what)
    : enabled_(wanted && platform::error_stream_is_terminal()), what_(std::move(what)) {}

ProgressLine::~ProgressLine() { hide(); }

void ProgressLine::update(std::size_t done, std::size_t failed, std::optional<std::size_t> total) {
  constexpr double least_pause = 0.1;  // seconds
  if (!enabled_) return;
  const double now = stopwatch_.seconds();
  if (drawn_ && now - *drawn_ < least_pause) return;
  drawn_ = now;
  const auto rate = rate_.at(now, done);
  // Many terminals wrap a line that fills their last column.
  const auto columns = static_cast<std::size_t>(std::max(platform::terminal_columns() - 1, 0));
  const std::string text = progress_text({done, failed, total, rate}, what_, columns);
  const std::size_t rest = std::max(std::min(visible_, columns), text.size()) - text.size();
  // One piece, so that it does not flicker.
  std::cerr << "\r" + text + std::string(rest, ' ') << std::flush;
  visible_ = text.size();
}

void ProgressLine::hide() {
  if (visible_ == 0) return;
  std::cerr << "\r" + std::string(visible_, ' ') + "\r" << std::flush;
  visible_ = 0;
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/progress_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iomanip>
#include <sstream>

namespace kv::polarization {
namespace {

constexpr double kWindowSeconds = 30;
constexpr double kSampleSeconds = 1;
constexpr std::size_t kLeastCells = 10;
constexpr std::size_t kMostCells = 40;

/// 1,234,567
std::string grouped(std::size_t number) {
  std::string digits = std::to_string(number);
  for (std::size_t i = digits.size(); i > 3; i -= 3) digits.insert(i - 3, ",");
  return digits;
}

std::string rate_text(std::optional<double> per_second, const std::string& what) {
  if (!per_second || *per_second < 0.01) return "";
  std::ostringstream text;
  text << std::fixed
       << std::setprecision(*per_second >= 100 ? 0
                            : *per_second >= 1 ? 1
                                               : 2)
       << *per_second;
  return ", " + text.str() + " " + what + "/s";
}

std::string time_left(const Progress& progress) {
  if (!progress.total || *progress.total <= progress.done || !progress.per_second ||
      *progress.per_second <= 0) {
    return "";
  }
  const double seconds =
      static_cast<double>(*progress.total - progress.done) / *progress.per_second;
  const auto shown = [](double number, const std::string& unit) {
    return ", about " + std::to_string(std::max(std::lround(number), 1L)) + " " + unit + " left";
  };
  constexpr double minute = 60;
  constexpr double hour = 3600;
  if (seconds <= minute) return shown(seconds, "s");
  if (seconds <= 3 * hour) return shown(seconds / minute, "min");
  if (seconds <= 999 * hour) return shown(seconds / hour, "h");
  return "";  // the figure would say nothing
}

std::string bar(const Progress& progress, std::size_t room) {
  constexpr std::size_t around = 3;  // brackets and the blank
  if (!progress.total || *progress.total == 0 || room < kLeastCells + around) return "";
  const std::size_t cells = std::min(room - around, kMostCells);
  const double part = static_cast<double>(std::min(progress.done, *progress.total)) /
                      static_cast<double>(*progress.total);
  const auto full = static_cast<std::size_t>(part * static_cast<double>(cells));
  return "[" + std::string(full, '#') + std::string(cells - full, '.') + "] ";
}

}  // namespace

std::string progress_text(const Progress& progress, const std::string& what, std::size_t columns) {
  std::string count = grouped(progress.done);
  if (progress.total) {
    const std::string both = count + " of " + grouped(*progress.total);
    if (both.size() <= columns) count = both;
  }
  if (count.size() > columns) return "";  // a part of a number would be a wrong one

  std::array<std::string, 4> parts = {
      " " + what, rate_text(progress.per_second, what),
      progress.failed > 0 ? ", " + grouped(progress.failed) + " failed" : "", time_left(progress)};
  std::size_t room = columns - count.size();
  bool all_fit = true;
  constexpr std::array<std::size_t, 4> most_missed_first = {2, 0, 3, 1};
  for (const std::size_t part : most_missed_first) {
    if (parts[part].size() > room) {
      parts[part].clear();
      all_fit = false;
    } else {
      room -= parts[part].size();
    }
  }
  std::string text = (all_fit ? bar(progress, room) : "") + count;
  for (const std::string& part : parts) text += part;
  return text;
}

std::optional<double> ProgressRate::at(double seconds, std::size_t done) {
  if (samples_.empty() || seconds - samples_.back().seconds >= kSampleSeconds) {
    samples_.push_back({seconds, done});
  }
  // The second one is old enough to measure from.
  while (samples_.size() > 1 && seconds - samples_[1].seconds >= kWindowSeconds) {
    samples_.pop_front();
  }
  const Sample& first = samples_.front();
  if (seconds - first.seconds < kSampleSeconds || done < first.done) return std::nullopt;
  return static_cast<double>(done - first.done) / (seconds - first.seconds);
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/batch/frame_order.h"

#include "command_line/messages.h"

namespace kv::polarization {

std::string FrameReport::name() const { return printable(file) + page; }

std::vector<FrameReport> FrameOrder::add(FrameReport report) {
  const Place place{report.input, report.place};
  waiting_.emplace(place, std::move(report));
  std::vector<FrameReport> ready;
  for (auto first = waiting_.begin(); first != waiting_.end() && first->first == next_;
       first = waiting_.begin()) {
    const auto [input, number] = next_;
    next_ = first->second.last_of_input ? Place{input + 1, 0} : Place{input, number + 1};
    ready.push_back(std::move(first->second));
    waiting_.erase(first);
  }
  return ready;
}

std::vector<FrameReport> FrameOrder::rest() {
  std::vector<FrameReport> rest;
  for (auto& [place, report] : waiting_) rest.push_back(std::move(report));
  waiting_.clear();
  return rest;
}

}  // namespace kv::polarization

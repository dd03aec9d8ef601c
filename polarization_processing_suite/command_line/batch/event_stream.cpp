// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/batch/event_stream.h"

#include <string>

#include "command_line/batch/provenance_record.h"
#include "command_line/json_output.h"
#include "command_line/options/values.h"
#include "platform/files.h"

namespace kv::polarization {

EventStream::EventStream(std::optional<int> descriptor) {
  if (!descriptor) return;
  stream_ = platform::open_descriptor_for_writing(*descriptor);
  if (stream_ == nullptr) {
    const std::string number = std::to_string(*descriptor);
    throw UsageError("--events: descriptor " + number +
                     " is not open for writing; open it in the shell, as by " + number +
                     ">events.jsonl");
  }
}

EventStream::~EventStream() {
  if (stream_ != nullptr) std::fclose(stream_);
}

void EventStream::write(const Json& event) {
  if (stream_ == nullptr) return;
  const std::string line = line_of(event) + "\n";
  const bool written = std::fwrite(line.data(), 1, line.size(), stream_) == line.size();
  if (!written || std::fflush(stream_) != 0) {
    std::fclose(stream_);
    stream_ = nullptr;
  }
}

}  // namespace kv::polarization

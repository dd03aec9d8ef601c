// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

#include "polarization_processor/log_client.h"

namespace kv {

/// Logs on leaving the scope how long it took. The line is written after a failed check too.
class TransformTimer {
 public:
  TransformTimer(const LogClient& log_client, const char* source_path, std::int32_t source_line,
                 const char* function_name);
  ~TransformTimer();
  TransformTimer(const TransformTimer&) = delete;
  TransformTimer& operator=(const TransformTimer&) = delete;

 private:
  const char* label_ = "transform";
  const LogClient& log_client_;
  const char* source_path_;
  std::int32_t source_line_;
  const char* function_name_;
  std::int64_t start_count_ = 0;
  std::int64_t stop_count_ = 0;
  std::int64_t frequency_ = 0;
};

}  // namespace kv

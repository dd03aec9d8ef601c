// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "polarization_processor/transform_timer.h"

#include <algorithm>

#include "platform/performance_counter.h"

namespace kv {

TransformTimer::TransformTimer(const LogClient& log_client, const char* source_path,
                               std::int32_t source_line, const char* function_name)
    : log_client_(log_client),
      source_path_(source_path),
      source_line_(source_line),
      function_name_(function_name) {
  if (platform::read_counter_frequency(frequency_)) platform::read_counter(start_count_);
}

TransformTimer::~TransformTimer() {
  if (!platform::read_counter(stop_count_)) return;
  // A counter that goes back, as that of a faulty virtual machine, makes no negative duration.
  const std::int64_t counts = std::max<std::int64_t>(stop_count_ - start_count_, 0);
  const double microseconds =
      static_cast<double>(counts) / static_cast<double>(frequency_) * 1000000.0;
  log_client_.log_message(Severity::timing, source_path_, source_line_, function_name_,
                          "%s takes %f microseconds.", label_, microseconds);
}

}  // namespace kv

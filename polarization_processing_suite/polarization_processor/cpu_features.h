#pragma once

#include "processor_instance.h"

namespace kv {

bool sse_available();

/// Asks the processor anew at every call.
bool sse41_available();

CpuTier detect_cpu_tier();

}  // namespace kv

#include "platform/process.h"

#include <unistd.h>

#include <cstdlib>

namespace kv::platform {

bool error_stream_is_terminal() { return isatty(STDERR_FILENO) != 0; }

void set_environment(const char* name, const char* value) {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): the caller sees to it that there is one thread.
  setenv(name, value, 1);
}

}  // namespace kv::platform

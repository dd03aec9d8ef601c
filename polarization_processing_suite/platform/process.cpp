#include "platform/process.h"

#include <csignal>

namespace kv::platform {

void ignore_file_size_signal() {
#if defined(SIGXFSZ)
  std::signal(SIGXFSZ, SIG_IGN);
#endif
}

void ignore_broken_pipes() {
#if defined(SIGPIPE)
  std::signal(SIGPIPE, SIG_IGN);
#endif
}

}  // namespace kv::platform

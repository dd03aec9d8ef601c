#include "process.h"

#include <csignal>
#include <cstdio>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace kv {
namespace {

volatile std::sig_atomic_t interruption = 0;

void on_interrupt(int signal) {
  interruption = 1;
  std::signal(signal, SIG_DFL);
}

}  // namespace

bool error_stream_is_terminal() {
#if defined(_WIN32)
  return _isatty(_fileno(stderr)) != 0;
#else
  return isatty(STDERR_FILENO) != 0;
#endif
}

void tame_signals() {
  std::signal(SIGINT, on_interrupt);
#if defined(SIGXFSZ)
  std::signal(SIGXFSZ, SIG_IGN);
#endif
}

bool interrupted() { return interruption != 0; }

}  // namespace kv

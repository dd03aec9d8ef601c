#include "platform/process.h"

#include <csignal>

namespace kv::platform {
namespace {

volatile std::sig_atomic_t interruption = 0;

void on_interrupt(int signal) {
  interruption = 1;
  std::signal(signal, SIG_DFL);
}

}  // namespace

void defer_interrupts() { std::signal(SIGINT, on_interrupt); }
bool interrupted() { return interruption != 0; }

void ignore_file_size_signal() {
#if defined(SIGXFSZ)
  std::signal(SIGXFSZ, SIG_IGN);
#endif
}

}  // namespace kv::platform

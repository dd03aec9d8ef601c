#include "process.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

#if defined(_WIN32)
#include <io.h>
#include <windows.h>
#else
#include <dlfcn.h>
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

void set_environment(const char* name, const std::string& value) {
#if defined(_WIN32)
  _putenv_s(name, value.c_str());
#else
  // Before the tool or a library starts a thread. NOLINTNEXTLINE(concurrency-mt-unsafe)
  setenv(name, value.c_str(), 1);
#endif
}

bool has_loaded(const std::string& library) {
#if defined(_WIN32)
  return GetModuleHandleA((library + ".dll").c_str()) != nullptr;
#else
  void* const loaded = dlopen((library + ".so").c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (loaded != nullptr) dlclose(loaded);
  return loaded != nullptr;
#endif
}

}  // namespace kv

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <time.h>
#include <unistd.h>

#include <cstdlib>

namespace kv::platform {

namespace {
constexpr int kUsualColumns = 80;
}

bool error_stream_is_terminal() { return isatty(STDERR_FILENO) != 0; }

int terminal_columns() {
  winsize size{};
  const bool told = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return told ? size.ws_col : kUsualColumns;
}

void fill_standard_streams() {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    if (fcntl(stream, F_GETFD) >= 0) continue;
    // A file that is opened takes the least free number. Nothing is read of one that is for
    // writing.
    open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

void make_standard_input_binary() {}

bool output_stream_is_terminal() { return isatty(STDOUT_FILENO) != 0; }

bool output_reader_has_gone() {
  pollfd output{.fd = STDOUT_FILENO, .events = 0, .revents = 0};
  return poll(&output, 1, 0) == 1 && (output.revents & POLLERR) != 0;
}

int process_number() { return getpid(); }

double processor_seconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

std::vector<std::string> command_line_words(int argc, char** argv) {
  if (argc < 1) return {};
  return {argv + 1, argv + argc};
}

void set_environment(const char* name, const char* value) {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): the caller sees to it that there is one thread.
  setenv(name, value, 1);
}

}  // namespace kv::platform

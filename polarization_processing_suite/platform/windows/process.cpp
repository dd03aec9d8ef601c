#include "platform/process.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdio>
#include <cstdlib>

namespace kv::platform {

namespace {
constexpr int kUsualColumns = 80;
}

bool error_stream_is_terminal() { return _isatty(_fileno(stderr)) != 0; }

int terminal_columns() {
  CONSOLE_SCREEN_BUFFER_INFO console{};
  const HANDLE errors = GetStdHandle(STD_ERROR_HANDLE);
  if (GetConsoleScreenBufferInfo(errors, &console) == 0) return kUsualColumns;
  return console.srWindow.Right - console.srWindow.Left + 1;
}

void make_standard_input_binary() { _setmode(_fileno(stdin), _O_BINARY); }

bool output_stream_is_terminal() { return _isatty(_fileno(stdout)) != 0; }

double processor_seconds() {
  FILETIME start, end, system, user;
  if (!GetProcessTimes(GetCurrentProcess(), &start, &end, &system, &user)) return 0;
  const auto seconds = [](const FILETIME& time) {  // its unit is 100 nanoseconds
    return 1e-7 * (4294967296.0 * time.dwHighDateTime + time.dwLowDateTime);
  };
  return seconds(system) + seconds(user);
}

void set_environment(const char* name, const char* value) { _putenv_s(name, value); }

}  // namespace kv::platform

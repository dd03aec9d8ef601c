#include "platform/process.h"

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

void set_environment(const char* name, const char* value) { _putenv_s(name, value); }

}  // namespace kv::platform

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

void set_environment(const char* name, const char* value) { _putenv_s(name, value); }

}  // namespace kv::platform

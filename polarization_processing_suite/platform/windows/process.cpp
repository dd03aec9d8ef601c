// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/process.h"

#include <fcntl.h>
#include <io.h>
// windows.h comes before the other, which uses its types.
// clang-format off
#include <windows.h>
#include <shellapi.h>
// clang-format on

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

void fill_standard_streams() {}  // no file takes the place of a stream

void make_standard_input_binary() { _setmode(_fileno(stdin), _O_BINARY); }

bool output_stream_is_terminal() { return _isatty(_fileno(stdout)) != 0; }

bool output_reader_has_gone() { return false; }

int process_number() { return static_cast<int>(GetCurrentProcessId()); }

double processor_seconds() {
  FILETIME start, end, system, user;
  if (!GetProcessTimes(GetCurrentProcess(), &start, &end, &system, &user)) return 0;
  const auto seconds = [](const FILETIME& time) {  // its unit is 100 nanoseconds
    return 1e-7 * (4294967296.0 * time.dwHighDateTime + time.dwLowDateTime);
  };
  return seconds(system) + seconds(user);
}

std::vector<std::string> command_line_words(int, char**) {
  SetConsoleOutputCP(CP_UTF8);
  int count = 0;
  wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> all;
  for (int i = 1; i < count; ++i) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, words[i], -1, nullptr, 0, nullptr, nullptr);
    std::string word(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, words[i], -1, word.data(), size, nullptr, nullptr);
    word.pop_back();  // the zero at its end
    all.push_back(std::move(word));
  }
  LocalFree(words);
  return all;
}

void set_environment(const char* name, const char* value) { _putenv_s(name, value); }

}  // namespace kv::platform

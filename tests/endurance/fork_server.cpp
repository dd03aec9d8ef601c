// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Makes of the program that it is loaded into, by LD_PRELOAD, one that runs as often as is asked
// for: the process stops before main() and forks for each line of its standard input, N, a child
// whose allocation N fails. The answer is a line `STATUS FAILED`: as waitpid tells it, and 1 if the
// child came as far as that allocation. A child has the files `out` and `error` of the folder that
// KV_FORK_STREAMS names as its streams, and ten seconds to end.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "failing_memory.h"

namespace {

void lead_into(int stream, const char* path, int flags) {
  const int file = open(path, flags, 0666);
  if (file < 0 || dup2(file, stream) < 0) _exit(99);
  close(file);
}

void become_child(const std::string& streams, long number) {
  lead_into(STDIN_FILENO, "/dev/null", O_RDONLY);
  lead_into(STDOUT_FILENO, (streams + "/out").c_str(), O_WRONLY | O_CREAT | O_TRUNC);
  lead_into(STDERR_FILENO, (streams + "/error").c_str(), O_WRONLY | O_CREAT | O_TRUNC);
  alarm(10);
  kv_fail_allocation(number);
}

/// Returns in the children alone, which go on to main().
__attribute__((constructor)) void serve() {
  const char* const streams = std::getenv("KV_FORK_STREAMS");
  if (streams == nullptr) return;
  unsetenv("LD_PRELOAD");
  auto* const reached = static_cast<bool*>(
      mmap(nullptr, sizeof(bool), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  kv_note_failure_in(reached);
  char line[32];
  while (read(STDIN_FILENO, line, sizeof line) > 0) {
    *reached = false;
    const pid_t child = fork();
    if (child == 0) return become_child(streams, std::strtol(line, nullptr, 10));
    int status = 0;
    waitpid(child, &status, 0);
    const std::string answer = std::to_string(status) + (*reached ? " 1\n" : " 0\n");
    if (write(STDOUT_FILENO, answer.data(), answer.size()) < 0) break;
  }
  _exit(0);
}

}  // namespace

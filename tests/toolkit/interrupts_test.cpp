// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// What a signal does to a program that defers it, seen from outside; and locks between programs.
#include <gtest/gtest.h>

#include <csignal>
#include <functional>

#include "kv/image_files.h"
#include "platform/file_lock.h"
#include "platform/process.h"
#include "temporary_folder.h"

#if !defined(_WIN32)
#include <sys/wait.h>
#include <unistd.h>
#endif

using namespace kv::polarization;
using namespace kv::platform;

namespace {

TEST(FileLock, IsSharedOrHeldByOneUntilItsEnd) {
  constexpr auto shared = FileLock::Mode::shared;
  constexpr auto exclusive = FileLock::Mode::exclusive;
  const TemporaryFolder folder;
  std::error_code failure;
  const auto lock = [&](FileLock::Mode mode) {
    return FileLock::try_lock(folder / "lock", mode, failure);
  };
  auto first = lock(shared);
  EXPECT_TRUE(first && lock(shared));
  EXPECT_TRUE(!lock(exclusive) && !failure);
  const FileLock moved = std::move(*first);
  first.reset();
  EXPECT_FALSE(lock(exclusive));
  {
    const auto other = FileLock::try_lock(folder / "other", exclusive, failure);
    EXPECT_TRUE(other && !FileLock::try_lock(folder / "other", shared, failure));
  }
  EXPECT_TRUE(FileLock::try_lock(folder / "other", exclusive, failure));
  EXPECT_FALSE(FileLock::try_lock(folder / "no" / "such", exclusive, failure));
  EXPECT_EQ(failure, std::errc::no_such_file_or_directory);
}

#if !defined(_WIN32)
/// How a program ends that does the work: its status, or minus the signal that ends it.
int end_of(const std::function<int()>& work) {
  const pid_t child = fork();
  if (child == 0) _exit(work());
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

TEST(Interrupts, TheFirstIsToldAndTheSecondRemovesPartialFiles) {
  const TemporaryFolder folder;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const auto signalled = [&](int times) {
      return end_of([&] {
        defer_interrupts();
        PendingFile file(folder / "plane.npy");
        file.write("part", 4);
        if (interrupted()) return 1;
        for (int i = 0; i < times; ++i) raise(signal);
        file.close();
        file.publish();
        return interrupted() ? 0 : 2;
      });
    };
    EXPECT_EQ(signalled(1), 0) << signal;
    EXPECT_EQ(names_in(folder / ""), std::vector<std::string>{"plane.npy"});
    std::filesystem::remove(folder / "plane.npy");
    EXPECT_EQ(signalled(2), 128 + signal);
    EXPECT_TRUE(names_in(folder / "").empty()) << signal;
  }
}

TEST(Interrupts, AHangUpThatWasIgnoredStaysIgnored) {
  EXPECT_EQ(end_of([] {
              std::signal(SIGHUP, SIG_IGN);
              defer_interrupts();
              raise(SIGHUP);
              return interrupted() ? 1 : 0;
            }),
            0);
}
#endif

}  // namespace

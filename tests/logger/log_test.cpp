// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// What reaches standard error and the log file through the three functions.
#include <thread>

#include "logger_test.h"

namespace kv::test {
namespace {

/// A log for the length of a scope.
struct ScopedLog {
  const char* module_name;
  const char* group_name = "";
  void* log = qrm_get_log(module_name, group_name, kConfigName);

  ~ScopedLog() { qrm_free_log(module_name, group_name); }

  std::int32_t write(std::int32_t severity, const std::string& message) const {
    return qrm_log(log, severity, "source.cpp", 12, "function", message.c_str());
  }
};

using Log = LoggerTest;

struct Situation {
  std::string config;
  const char* level_in_environment;
  std::string standard_error;
  Lines file;
};

TEST_F(Log, GoesWhereConfigurationAndEnvironmentSay) {
  const std::string error = "....-..-.. ..:..:..\\.... \\[error\\] B: an error\n";
  const std::string duration = "....-..-.. ..:..:..\\.... \\[debug\\] B: a duration\n";
  const std::string logger = "kevrinth_qrm_logger: ";
  const std::string defaults =
      "\\. The defaults hold: errors go to standard error, other lines are dropped\\.\n";
  const std::string maybe = logger + ".*test.cfg:2: console: 'maybe' is neither .*" + defaults;
  const std::string all = logger + "KEVRINTH_QRM_LOGGER_LEVEL: 'all' is not a whole .*";
  const std::string unwritable = logger + "file: .*; name a file that this process may write";
  const std::string to_file = "console = off\nfile = new/run.log\npattern = %v\n";
  const Situation situations[] = {
      {"", "", error, {}},
      {"level = 7", "", error + duration, {}},
      {"level = 7", "1", "", {}},
      {"level = 1", "7", error + duration, {}},
      {"level = 7", "all", all + "\\. The level is 7\\.\n" + error + duration, {}},
      {"level = 7\nconsole = maybe", "", maybe + error, {}},
      {"level = 1\nconsole = maybe", "7", maybe + error + duration, {}},
      {to_file + "level = 7", "", "", {"an error", "a duration"}},
      {to_file + "console = on", "", "an error\n", {"an error"}},
      {"level = 7\nfile = .", "", unwritable + defaults + error, {}},
  };
  for (const Situation& situation : situations) {
    configure(situation.config, situation.level_in_environment);
    const std::string said = standard_error_of([] {
      const ScopedLog first{"A"};
      const ScopedLog second{"B"};
      EXPECT_EQ(second.write(2, "an error"), 0);
      EXPECT_EQ(second.write(7, "a duration"), 0);
    });
    EXPECT_TRUE(is_like(said, situation.standard_error)) << situation.config;
    EXPECT_EQ(lines_of(folder / "new/run.log"), situation.file) << situation.config;
    fs::remove_all(folder / "new");
  }
}

TEST_F(Log, LevelIsTheHighestNumberWritten) {
  const Lines words{"0 error",   "1 error", "2 error", "3 warning",
                    "4 warning", "5 info",  "6 info",  "7 debug"};
  for (int level = 0; level <= 7; ++level) {
    const std::string number = std::to_string(level);
    configure("console = off\npattern = %v %l\nlevel = " + number + "\nfile = " + number);
    const ScopedLog log{"MODULE"};
    for (int severity = 0; severity <= 7; ++severity) {
      EXPECT_EQ(log.write(severity, std::to_string(severity)), 0);
    }
    // The log is open still: each line is in the file at once.
    EXPECT_EQ(lines_of(folder / number), Lines(words.begin(), words.begin() + level + 1));
  }
}

TEST_F(Log, PatternShowsSourceAndNames) {
  configure("console = off\nfile = run.log\npattern = %n %s:%# %! %v %%");
  const ScopedLog module_log{"MODULE"};
  const ScopedLog group_log{"MODULE", "GROUP"};
  const ScopedLog nameless{nullptr, nullptr};
  module_log.write(2, "{} %s");
  nameless.write(2, "nameless");
  EXPECT_EQ(qrm_log(group_log.log, 2, nullptr, 0, nullptr, nullptr), 0);
  EXPECT_EQ(qrm_log(nullptr, 2, "", 0, "", ""), 1);
  EXPECT_EQ(lines_of(folder / "run.log"),
            (Lines{"MODULE source.cpp:12 function {} %s %", " source.cpp:12 function nameless %",
                   "MODULE/GROUP :   %"}));
}

/// The second module names configuration and file differently, and other limits for the file.
TEST_F(Log, ModulesShareAFileThatIsSetAsideWhenFull) {
  configure("console = off\nfile = run.log\nfile_max_kib = 1\nfile_count = 2\npattern = %v");
  const ScopedLog first{"A"};
  configure("console = off\nfile = ./new/../run.log\npattern = other %v");
  const fs::path before = fs::current_path();
  fs::current_path(folder);
  set_environment("test.cfg", "");
  const ScopedLog second{"B"};
  fs::current_path(before);
  // A line takes 101 bytes, on Windows 102, so that a file has room for ten.
  const std::string dots(97, '.');
  for (int i = 100; i < 200; ++i) {
    (i % 3 == 0 ? first : second).write(2, dots + std::to_string(i));
  }
  int next = 170;
  for (const char* name : {"run.2.log", "run.1.log", "run.log"}) {
    Lines expected;
    for (int i = 0; i < 10; ++i) expected.push_back(dots + std::to_string(next++));
    EXPECT_EQ(lines_of(folder / name), expected) << name;
  }
  EXPECT_FALSE(fs::exists(folder / "run.3.log"));
}

TEST_F(Log, StaysUntilGivenBackAsOftenAsGot) {
  configure("console = off\nlevel = 7\nfile = run.log\npattern = %v");
  {
    const ScopedLog log{"MODULE"};
    configure("console = off\nlevel = 6\nfile = run.log\npattern = again %v");
    { EXPECT_EQ(ScopedLog{"MODULE"}.log, log.log); }
    qrm_free_log("UNKNOWN", "");
    qrm_free_log("MODULE", "ANOTHER");
    log.write(7, "still there");
  }
  const ScopedLog log{"MODULE"};
  log.write(7, "dropped by the new configuration");
  log.write(6, "appended");
  EXPECT_EQ(lines_of(folder / "run.log"), (Lines{"still there", "again appended"}));
}

TEST_F(Log, ThreadsGetWriteAndFreeAtOnce) {
  configure("console = off\nfile = run.log\npattern = %v");
  std::vector<std::thread> threads;
  for (const char* module_name : {"A", "B", "A", "B"}) {
    threads.emplace_back([module_name] {
      for (int i = 0; i < 200; ++i) ScopedLog{module_name}.write(2, "line");
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(lines_of(folder / "run.log"), Lines(800, "line"));
}

TEST_F(Log, FullDiskIsReportedOnceAndToTheCaller) {
  if (!fs::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
  configure("file = /dev/full\npattern = %v");
  const std::string said = standard_error_of([] {
    const ScopedLog log{"MODULE"};
    EXPECT_EQ(log.write(2, "one"), 1);
    EXPECT_EQ(log.write(2, "two"), 1);
  });
  EXPECT_TRUE(is_like(said, "one\nkevrinth_qrm_logger: lines of MODULE are lost: .*\ntwo\n"));
}

}  // namespace
}  // namespace kv::test

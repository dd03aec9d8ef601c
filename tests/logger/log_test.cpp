// What reaches standard error and the log file through the three functions.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "kevrinth_qrm_logger.h"
#include "kevrinth_qrm_polarization_processor.h"
#include "working_folder.h"

namespace kv::test {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

constexpr char kConfigName[] = "kevrinth_qrm_logger.cfg";

/// A log for the length of a scope.
class ScopedLog {
 public:
  explicit ScopedLog(const char* module_name, const char* group_name = "")
      : module_name_(module_name),
        group_name_(group_name),
        log_(qrm_get_log(module_name, group_name, kConfigName)) {}
  ~ScopedLog() { qrm_free_log(module_name_, group_name_); }
  ScopedLog(const ScopedLog&) = delete;
  ScopedLog& operator=(const ScopedLog&) = delete;

  std::int32_t write(std::int32_t severity, const std::string& message) const {
    return qrm_log(log_, severity, "source.cpp", 12, "function", message.c_str());
  }
  void* get() const { return log_; }

 private:
  const char* module_name_;
  const char* group_name_;
  void* log_;
};

Lines split(const std::string& text) {
  Lines lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

/// What `act` writes to standard error.
template <class Act>
Lines standard_error_of(Act act) {
  testing::internal::CaptureStderr();
  act();
  return split(testing::internal::GetCapturedStderr());
}

TEST(Log, LevelIsTheHighestNumberWritten) {
  for (std::int32_t level = 0; level <= 7; ++level) {
    const WorkingFolder folder("console = off\nfile = run.log\npattern = %v\nlevel = " +
                               std::to_string(level));
    Lines expected;
    const ScopedLog log("MODULE");
    for (std::int32_t severity = 0; severity <= 7; ++severity) {
      EXPECT_EQ(log.write(severity, std::to_string(severity)), 0);
      if (severity <= level) expected.push_back(std::to_string(severity));
    }
    EXPECT_EQ(lines_of("run.log"), expected) << "level " << level;
  }
}

/// The arguments stay part of the environment.
void set_level_in_environment(char* assignment) { EXPECT_EQ(putenv(assignment), 0); }

TEST(Log, EnvironmentGoesBeforeTheConfiguredLevel) {
  static char dropped[] = "KEVRINTH_QRM_LOGGER_LEVEL=1";
  static char broken[] = "KEVRINTH_QRM_LOGGER_LEVEL=all";
  static char none[] = "KEVRINTH_QRM_LOGGER_LEVEL=";
  const WorkingFolder folder("console = off\nlevel = 4\nfile = run.log\npattern = %v");
  const auto log_all = [](const std::string& name) {
    const ScopedLog log("MODULE");
    for (const std::int32_t severity : {1, 4, 7}) {
      log.write(severity, name + " " + std::to_string(severity));
    }
  };
  set_level_in_environment(dropped);
  log_all("1");
  set_level_in_environment(broken);
  const Lines said = standard_error_of([&] { log_all("all"); });
  set_level_in_environment(none);
  log_all("none");
  EXPECT_EQ(lines_of("run.log"), (Lines{"1 1", "all 1", "all 4", "none 1", "none 4"}));
  EXPECT_EQ(said,
            Lines{"kevrinth_qrm_logger: KEVRINTH_QRM_LOGGER_LEVEL: 'all' is not a whole number "
                  "from 0 to 7. The level is 4."});
}

TEST(Log, PatternShowsSourceModuleAndSeverity) {
  const WorkingFolder folder(
      "console = off\nlevel = 7\nfile = new/run.log\npattern = %l %n %s:%# %! %v %%");
  {
    const ScopedLog module_log("MODULE");
    const ScopedLog group_log("MODULE", "GROUP");
    module_log.write(2, "{} %s");
    group_log.write(7, "");
    EXPECT_EQ(qrm_log(group_log.get(), 4, nullptr, 0, nullptr, nullptr), 0);
  }
  EXPECT_EQ(lines_of("new/run.log"),
            (Lines{"error MODULE source.cpp:12 function {} %s %",
                   "debug MODULE/GROUP source.cpp:12 function  %", "warning MODULE/GROUP :   %"}));
}

TEST(Log, WithoutConfigurationErrorsGoToStandardErrorAndDurationsNowhere) {
  const WorkingFolder folder;
  const Lines lines = standard_error_of([] {
    const ScopedLog log("MODULE");
    log.write(2, "an error");
    log.write(7, "a duration");
  });
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_TRUE(lines[0].ends_with(" [error] MODULE: an error")) << lines[0];
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

struct BrokenConfig {
  const char* config;
  const char* fault_end;
};

TEST(Log, WhatIsWrongIsSaidOnceAndTheDefaultsHold) {
  const BrokenConfig broken[] = {
      {"level = 7\nconsole = maybe", "cfg:2: console: 'maybe' is neither 'on' nor 'off'"},
      {"console = off\nfile = .", "; name a file that this process may write"},
  };
  for (const BrokenConfig& situation : broken) {
    const WorkingFolder folder(situation.config);
    const Lines lines = standard_error_of([] {
      const ScopedLog first("FIRST");
      const ScopedLog second("SECOND");
      EXPECT_EQ(second.write(2, "an error"), 0);
      EXPECT_EQ(second.write(7, "a duration"), 0);
    });
    ASSERT_EQ(lines.size(), 2u) << situation.config;
    EXPECT_TRUE(lines[0].starts_with("kevrinth_qrm_logger: ")) << lines[0];
    EXPECT_NE(lines[0].find(std::string(situation.fault_end) + ". The defaults hold: "),
              std::string::npos)
        << lines[0];
    EXPECT_TRUE(lines[1].ends_with(" [error] SECOND: an error")) << lines[1];
  }
}

TEST(Log, FullFilesAreSetAside) {
  const WorkingFolder folder(
      "console = off\nfile = run.log\nfile_max_kib = 1\nfile_count = 2\npattern = %v");
  {
    const ScopedLog log("MODULE");
    for (int i = 0; i < 100; ++i) log.write(2, std::string(97, '.') + std::to_string(100 + i));
  }
  Lines kept;
  for (const char* name : {"run.2.log", "run.1.log", "run.log"}) {
    EXPECT_LE(fs::file_size(name), 1024u) << name;
    const Lines lines = lines_of(name);
    kept.insert(kept.end(), lines.begin(), lines.end());
  }
  EXPECT_FALSE(fs::exists("run.3.log"));
  ASSERT_EQ(kept.size(), 30u);
  EXPECT_TRUE(kept.front().ends_with(".170"));
  EXPECT_TRUE(kept.back().ends_with(".199"));
}

TEST(Log, StaysUntilGivenBackAsOftenAsGot) {
  const WorkingFolder folder("console = off\nlevel = 7\nfile = run.log\npattern = %n %v");
  {
    const ScopedLog first("MODULE");
    const ScopedLog other("MODULE", "GROUP");
    EXPECT_NE(first.get(), other.get());
    write_file(kConfigName, "console = off\nlevel = 0");
    { EXPECT_EQ(ScopedLog("MODULE").get(), first.get()); }
    qrm_free_log("UNKNOWN", "");
    qrm_free_log("MODULE", "ANOTHER");
    first.write(7, "still there");
  }
  ScopedLog("MODULE").write(7, "dropped by the new configuration");
  EXPECT_EQ(lines_of("run.log"), Lines{"MODULE still there"});
}

TEST(Log, ModulesAndThreadsShareAFile) {
  const WorkingFolder folder("console = off\nfile = run.log\npattern = %n %v");
  constexpr int kThreads = 4;
  constexpr int kLines = 200;
  const std::vector<const char*> modules{"A", "B"};
  Lines expected;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    const char* const module_name = modules[static_cast<std::size_t>(thread) % modules.size()];
    for (int i = 0; i < kLines; ++i) {
      expected.push_back(module_name + (" " + std::to_string(thread)));
    }
    threads.emplace_back([=] {
      for (int i = 0; i < kLines; ++i) {
        ScopedLog(module_name).write(2, std::to_string(thread));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  Lines found = lines_of("run.log");
  std::sort(found.begin(), found.end());
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(found, expected);
}

TEST(Log, NullLogIsRefused) { EXPECT_EQ(qrm_log(nullptr, 2, "", 0, "", ""), 1); }

TEST(Log, ProcessorLibraryWritesItsLines) {
  const WorkingFolder folder("console = off\nlevel = 7\nfile = run.log\npattern = %l %s %! %v");
  ASSERT_EQ(kv_polarization_processor_module_initialize(), kv_status_ok);
  EXPECT_EQ(kv_polarization_processor_destroy_polarization_processor(nullptr),
            kv_status_null_handle);
  ASSERT_EQ(kv_polarization_processor_module_terminate(), kv_status_ok);
  EXPECT_EQ(lines_of("run.log"), Lines{"error kevrinth_qrm_polarization_processor.cpp "
                                       "kv_polarization_processor_destroy_polarization_processor "
                                       "ERROR:  The specified color processor handle is NULL!"});
}

}  // namespace
}  // namespace kv::test

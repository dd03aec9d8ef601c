// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "logger/config.h"

#include <gtest/gtest.h>

#include <sstream>

namespace kv::logger {
namespace {

Config parsed(const std::string& text) {
  std::istringstream lines(text);
  return parse_config(lines, "test.cfg");
}

TEST(LoggerConfig, SampleHoldsTheDefaults) { EXPECT_EQ(read_config(SAMPLE_CONFIG), Config{}); }

TEST(LoggerConfig, EachKey) {
  const Config expected{.level = 7,
                        .console = false,
                        .file = "a folder/run #1.log",
                        .file_max_kib = 1,
                        .file_count = 0,
                        .pattern = "%# = %v"};
  EXPECT_EQ(parsed("\xEF\xBB\xBFlevel=1\r\n"
                   "level=7\r\n"
                   "  console =\toff  \r\n"
                   "# level = 3\r\n"
                   "\r\n"
                   "file = a folder/run #1.log\r\n"
                   "file_max_kib = 1\r\n"
                   "file_count = 0\r\n"
                   "pattern = %# = %v"),
            expected);
  Config greatest;
  greatest.file_max_kib = 1048576;
  greatest.file_count = 1000;
  EXPECT_EQ(parsed("file_max_kib = 1048576\nfile_count = 1000"), greatest);
}

struct Fault {
  const char* text;
  const char* message;
};

TEST(LoggerConfig, FaultsSayWhatIsWrongAndWhatWouldBeRight) {
  const Fault faults[] = {
      {"level = 8", "test.cfg:1: level: '8' is not a whole number from 0 to 7"},
      {"\n\nlevel = -1", "test.cfg:3: level: '-1' is not a whole number from 0 to 7"},
      {"level = 2.5", "test.cfg:1: level: '2.5' is not a whole number from 0 to 7"},
      {"level =", "test.cfg:1: level: '' is not a whole number from 0 to 7"},
      {"file_max_kib = 0", "test.cfg:1: file_max_kib: '0' is not a whole number from 1 to 1048576"},
      {"file_max_kib = 1048577",
       "test.cfg:1: file_max_kib: '1048577' is not a whole number from 1 to 1048576"},
      {"file_count = 1001", "test.cfg:1: file_count: '1001' is not a whole number from 0 to 1000"},
      {"file_count = many", "test.cfg:1: file_count: 'many' is not a whole number from 0 to 1000"},
      {"console = yes", "test.cfg:1: console: 'yes' is neither 'on' nor 'off'"},
      {"# level\nlevel 2", "test.cfg:2: 'level 2' is not of the form 'key = value'"},
      {"Level = 2",
       "test.cfg:1: unknown key 'Level'; known are level, console, file, file_max_kib, file_count, "
       "pattern"},
  };
  for (const Fault& fault : faults) {
    try {
      parsed(fault.text);
      ADD_FAILURE() << fault.text;
    } catch (const ConfigFault& found) {
      EXPECT_STREQ(found.what(), fault.message);
    }
  }
}

}  // namespace
}  // namespace kv::logger

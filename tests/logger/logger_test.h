// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <regex>
#include <string>
#include <vector>

#include "kevrinth_qrm_logger.h"
#include "platform/process.h"

namespace kv::test {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

constexpr char kConfigName[] = "kevrinth_qrm_logger.cfg";

inline Lines lines_of(const fs::path& path) {
  std::ifstream file(path);
  Lines lines;
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

/// Whether a regular expression describes the whole text.
inline testing::AssertionResult is_like(const std::string& text, const std::string& expected) {
  if (std::regex_match(text, std::regex(expected))) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "expected\n" << expected << "\nfound\n" << text;
}

template <class Act>
std::string standard_error_of(Act act) {
  testing::internal::CaptureStderr();
  act();
  return testing::internal::GetCapturedStderr();
}

/// With a folder of its own, and no setting of the environment but the test's.
class LoggerTest : public testing::Test {
 protected:
  LoggerTest() { fs::create_directory(folder); }
  ~LoggerTest() override {
    set_environment("", "");
    fs::remove_all(folder);
  }

  static void set_environment(const std::string& config, const char* level) {
    platform::set_environment("KEVRINTH_QRM_LOGGER_CONFIG", config.c_str());
    platform::set_environment("KEVRINTH_QRM_LOGGER_LEVEL", level);
  }

  void configure(const std::string& config, const char* level = "") const {
    const fs::path file = folder / "test.cfg";
    std::ofstream(file, std::ios::binary) << config;
    set_environment(file.string(), level);
  }

  const fs::path folder =
      fs::temp_directory_path() / ("logger_test_" + std::to_string(std::random_device{}()));
};

}  // namespace kv::test

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// The library as a file in a folder with companions that throw: it finds them beside itself, hands
// their exceptions on as it should, and leaves the process as it was.
#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "kevrinth_qrm_polarization_processor.h"
#include "platform/optional_library.h"
#include "platform/process.h"

namespace kv::test {
namespace {

bool loaded(const char* stem) {
  return platform::is_loaded((std::string(stem) + platform::kLibrarySuffix).c_str());
}

class LibraryFile : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(initialize_ != nullptr && create_ != nullptr);
    EXPECT_FALSE(loaded("kevrinth_qrm_logger"));
  }

  void TearDown() override {
    platform::unload_library(library_);
    EXPECT_EQ(loaded("kevrinth_qrm_logger"), logger_stays_);
    EXPECT_FALSE(loaded("kevrinth_qrm_polarization_processor"));
  }

  bool logger_stays_ = false;
  platform::LibraryHandle library_ = platform::load_library(PROCESSOR_LIBRARY);
  decltype(&kv_polarization_processor_module_initialize) initialize_ =
      platform::find_function<decltype(initialize_)>(library_,
                                                     "kv_polarization_processor_module_initialize");
  decltype(&kv_polarization_processor_create_polarization_processor) create_ =
      platform::find_function<decltype(create_)>(
          library_, "kv_polarization_processor_create_polarization_processor");
};

TEST_F(LibraryFile, IsUnloadedWithoutATerminate) {
  EXPECT_EQ(initialize_(), kv_status_ok);
  EXPECT_EQ(initialize_(), kv_status_ok);
  EXPECT_TRUE(loaded("kevrinth_qrm_logger"));
}

TEST_F(LibraryFile, IsUnloadedWithoutAnInitialize) {}

TEST_F(LibraryFile, TakesExceptionsOfModuleAndLogger) {
  ASSERT_EQ(initialize_(), kv_status_ok);
  PolarizationProcessor* handle = nullptr;
  EXPECT_EQ(create_(&handle), kv_status_out_of_memory);
  EXPECT_EQ(handle, nullptr);
  EXPECT_TRUE(loaded("kevrinth_qrm_polarization_processor_vector_avx512"));
}

TEST_F(LibraryFile, LetsOutWhatGetLogThrows) {
  platform::set_environment("KV_GET_LOG_THROWS", "1");
  EXPECT_THROW(initialize_(), std::runtime_error);
  logger_stays_ = true;  // The exception is of its code.
}

}  // namespace
}  // namespace kv::test

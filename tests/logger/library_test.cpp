// The library as a file: where it looks for its configuration, that it can be unloaded, and what
// it makes of a full disk.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include "kevrinth_qrm_logger.h"
#include "working_folder.h"

namespace kv::test {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

constexpr char kConfigName[] = "kevrinth_qrm_logger.cfg";

/// Loads a library, logs one error and unloads it.
void log_once(const fs::path& library, const char* message) {
  void* const loaded = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(loaded, nullptr) << dlerror();
  const auto get = reinterpret_cast<decltype(&qrm_get_log)>(dlsym(loaded, "qrm_get_log"));
  const auto write = reinterpret_cast<decltype(&qrm_log)>(dlsym(loaded, "qrm_log"));
  const auto free = reinterpret_cast<decltype(&qrm_free_log)>(dlsym(loaded, "qrm_free_log"));
  ASSERT_TRUE(get != nullptr && write != nullptr && free != nullptr);
  EXPECT_EQ(write(get("MODULE", "", kConfigName), 2, "", 0, "", message), 0);
  free("MODULE", "");
  dlclose(loaded);
  EXPECT_EQ(dlopen(library.c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr) << "it is still loaded";
}

TEST(LoggerLibrary, WorkingFolderGoesBeforeTheFolderOfTheLibrary) {
  const WorkingFolder folder;
  fs::create_directory("library");
  const fs::path library = folder.path() / "library" / "kevrinth_qrm_logger.so";
  fs::copy_file(LOGGER_LIBRARY, library);
  write_file(library.parent_path() / kConfigName, "console = off\nfile = beside.log\npattern = %v");
  log_once(library, "first");
  write_file(kConfigName, "console = off\nfile = working.log\npattern = %v");
  log_once(library, "second");
  EXPECT_EQ(lines_of("beside.log"), Lines{"first"});
  EXPECT_EQ(lines_of("working.log"), Lines{"second"});
}

TEST(LoggerLibrary, FullDiskIsReportedOnceAndToTheCaller) {
  if (!fs::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
  const WorkingFolder folder("console = off\nfile = /dev/full");
  testing::internal::CaptureStderr();
  void* const log = qrm_get_log("MODULE", "", kConfigName);
  EXPECT_EQ(qrm_log(log, 2, "", 0, "", "lost"), 1);
  EXPECT_EQ(qrm_log(log, 2, "", 0, "", "lost too"), 1);
  qrm_free_log("MODULE", "");
  const std::string said = testing::internal::GetCapturedStderr();
  EXPECT_TRUE(said.starts_with("kevrinth_qrm_logger: lines of MODULE are lost: ")) << said;
  EXPECT_EQ(said.find('\n'), said.size() - 1) << said;
}

}  // namespace
}  // namespace kv::test

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// The library as a file: where it looks for its configuration, and that it can be unloaded.
#include <dlfcn.h>

#include "logger_test.h"

namespace kv::test {
namespace {

/// Loads a library, logs one error and unloads it.
void log_once(const std::string& library, const std::string& config) {
  void* const loaded = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(loaded, nullptr) << dlerror();
  const auto get = reinterpret_cast<decltype(&qrm_get_log)>(dlsym(loaded, "qrm_get_log"));
  const auto write = reinterpret_cast<decltype(&qrm_log)>(dlsym(loaded, "qrm_log"));
  const auto free = reinterpret_cast<decltype(&qrm_free_log)>(dlsym(loaded, "qrm_free_log"));
  ASSERT_TRUE(get != nullptr && write != nullptr && free != nullptr);
  EXPECT_EQ(write(get("MODULE", "", config.c_str()), 2, "", 0, "", "an error"), 0);
  free("MODULE", "");
  dlclose(loaded);
  EXPECT_EQ(dlopen(library.c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr) << "it is still loaded";
}

struct Search {
  std::string library;
  std::string config;
  std::string config_in_environment;
  std::string outcome;  ///< The folder of the configuration, or what is said.
};

TEST_F(LoggerTest, ConfigurationIsBesideTheLibraryOrNamedAndNeverInTheWorkingFolder) {
  const std::string name = kConfigName;
  const char* const places[] = {"beside", "beside/below", "named", "absolute", "working"};
  for (const char* place : places) {
    fs::create_directory(folder / place);
    std::ofstream(folder / place / name) << "console = off\nfile = run.log\npattern = %v";
    fs::copy_file(LOGGER_LIBRARY, folder / place / "library.so");
  }
  const std::string library = (folder / "beside/library.so").string();
  const std::string absolute = (folder / "absolute" / name).string();
  const std::string defaults = ".*\\[error\\] MODULE: an error\n";
  const std::string fault = "kevrinth_qrm_logger: ../named";
  const Search searches[] = {
      {library, name, "", "beside"},
      {library, "below/" + name, "", "beside/below"},
      {library, absolute, "", "absolute"},
      {library, name, "../named/" + name, "named"},
      {library, absolute, "../named/" + name, "absolute"},
      {library, "no.cfg", "", defaults},
      {library, "", "", defaults},
      {library, absolute + ".no", "", defaults},
      {"./library.so", name, "", defaults},
      {library, name, "../named/no.cfg",
       fault + "/no.cfg: cannot be opened for reading\\. .*\n" + defaults},
      {library, name, "../named", fault + ": cannot be read\\. .*\n" + defaults},
  };
  const fs::path before = fs::current_path();
  fs::current_path(folder / "working");
  for (const Search& search : searches) {
    set_environment(search.config_in_environment, "");
    std::string found = standard_error_of([&] { log_once(search.library, search.config); });
    for (const char* place : places) {
      if (fs::remove(folder / place / "run.log")) found += place;
    }
    EXPECT_TRUE(is_like(found, search.outcome))
        << search.library << " " << search.config << " " << search.config_in_environment;
  }
  fs::current_path(before);
}

}  // namespace
}  // namespace kv::test

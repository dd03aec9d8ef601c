// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <deque>
#include <string>

#include "error_of.h"
#include "kv/image_files.h"
#include "platform/registered_files.h"
#include "temporary_folder.h"

#if !defined(_WIN32)
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#endif

using namespace kv::polarization;

namespace {

class PendingFiles : public testing::Test {
 protected:
  auto names() const { return names_in(path_.parent_path()); }

  TemporaryFolder folder_;
  std::filesystem::path path_ = folder_ / "plane.png";
};

TEST_F(PendingFiles, ATargetThatNoFileCanBeIsRefusedAtOnce) {
  std::filesystem::create_directory(path_);
  const std::pair<std::filesystem::path, const char*> cases[] = {
    {path_, "is a folder"},
    {path_ / "no" / "such", "cannot write"},
#if !defined(_WIN32)
    {"/dev/null", "device"},
    {folder_ / std::string(256, 'n'), "shorter name"},
#endif
  };
  for (const auto& [target, part] : cases) {
    EXPECT_PRED2(contains, error_of([&path = target] { PendingFile file(path); }), part);
    EXPECT_EQ(kind_of([&path = target] { PendingFile file(path); }), FaultKind::file);
  }
  EXPECT_EQ(names(), std::vector<std::string>{"plane.png"});
}

TEST_F(PendingFiles, NamesMayBeAsLongAsTheFileSystemTakesThem) {
  // With 18 bytes more, the temporary name would have 255 or 256 of them.
  for (const std::size_t size : {237u, 238u, 255u}) {
    path_ = folder_ / std::string(size, 'n');
    EXPECT_EQ(written(path_, [](auto& file) { file.write("new", 3); }), "new") << size;
  }
}

TEST_F(PendingFiles, PublishedAsNewTheyReplaceNothing) {
  for (const char* expected : {"first", "first"}) {
    PendingFile file(path_);
    const std::string content = names().size() == 1 ? "first" : "second";
    file.write(content.data(), content.size());
    file.sync();
    file.close();
    const std::string error = error_of([&] { file.publish_new(); });
    EXPECT_EQ(contains(error, path_.string()), content == "second") << error;
    EXPECT_EQ(content_of(path_), expected);
  }
  EXPECT_EQ(names(), std::vector<std::string>{"plane.png"});
}

TEST_F(PendingFiles, ASignalsHandlerRemovesTheUnpublishedOnes) {
  { PendingFile abandoned(folder_ / "abandoned"); }
  written(path_, [](auto& file) { file.write("new", 3); });
  {
    PendingFile unpublished(folder_ / "unpublished"), closed(folder_ / "closed");
    closed.close();
    EXPECT_EQ(names().size(), 3u);
    kv::platform::remove_registered_files();
    unpublished.close();  // Windows keeps the name of a file until it is closed
    EXPECT_EQ(names(), std::vector<std::string>{"plane.png"});
  }
  std::deque<PendingFile> more_than_are_noted;
  for (int i = 0; i < 300; ++i) more_than_are_noted.emplace_back(folder_ / std::to_string(i));
}

TEST_F(PendingFiles, LeftoversOfKilledRunsAreRemovedAndNothingElse) {
  const std::vector<std::string> others = {"a.png",
                                           "a.png.123456789.partial",
                                           "a.png.12345678901.partial",
                                           "a.png.123456789x.partial",
                                           "a.png.1234567890.partial.png",
                                           "a.png.1234567890.part"};
  for (const std::string& name : others) write_content(folder_ / name, "kept");
  write_content(folder_ / "a.png.1234567890.partial", "stale");
  write_content(folder_ / ".kv.1234567890.partial", "stale");
  std::filesystem::create_directory(folder_ / "b.1234567890.partial");
  {
    PendingFile live(path_);
    EXPECT_EQ(remove_stale_partials(path_.parent_path()), 3u);
  }
  EXPECT_EQ(names().size(), others.size() + 1);
  for (const std::string& name : others) EXPECT_EQ(content_of(folder_ / name), "kept") << name;
  EXPECT_EQ(remove_stale_partials(folder_ / "missing"), 0u);
}

TEST(StandardOutput, GetsAllOfAFileThatIsWrittenBackAndForth) {
  const std::string content(3'000'000, '\n');
  testing::internal::CaptureStdout();
  PendingFile file = PendingFile::standard_output();
  file.write(content.data(), content.size());
  std::fseek(file.stream(), 5, SEEK_SET);
  file.write("inside", 6);
  file.sync();
  file.close();
  file.publish();
  EXPECT_TRUE(testing::internal::GetCapturedStdout() ==
              std::string(5, '\n') + "inside" + content.substr(11));
}

#if !defined(_WIN32)
TEST(StandardOutput, TellsWhenNobodyReadsIt) {
  const auto write_to_closed_pipe = [] {
    int ends[2];
    if (pipe(ends) != 0) std::abort();
    dup2(ends[1], STDOUT_FILENO);
    close(ends[0]);
    std::signal(SIGPIPE, SIG_IGN);
    PendingFile file = PendingFile::standard_output();
    file.write("plane", 5);
    const std::string error = error_of([&] { file.close(); });
    std::fputs(error.c_str(), stderr);
    _exit(0);
  };
  EXPECT_EXIT(write_to_closed_pipe(), testing::ExitedWithCode(0),
              "cannot write to the standard output: Broken pipe");
}
#endif

}  // namespace

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Which files the words of a command line stand for.
#include <gtest/gtest.h>

#include <fstream>
#include <tuple>

#include "command_line/inputs/input_list.h"
#include "command_line/inputs/name_pattern.h"
#include "command_line/inputs/natural_order.h"
#include "command_line/inputs/number_range.h"
#include "command_line/path_text.h"
#include "toolkit/error_of.h"
#include "toolkit/temporary_folder.h"

#if !defined(_WIN32)
#include <sys/stat.h>
#include <unistd.h>
#endif

using namespace kv::polarization;
namespace fs = std::filesystem;

namespace {

using Words = std::vector<std::string>;

std::string text(const fs::path& path) { return text_of(path.generic_u8string()); }

/// A current folder with these files.
class Inputs : public testing::Test {
 protected:
  Inputs() {
    fs::current_path(folder_ / "");
    for (const char* name : {"night/frame_10.png",
                             "night/frame_2.png",
                             "night/frame_1.TIF",
                             "night/notes.txt",
                             "night/table.csv",
                             "night/.frame_3.png",
                             "night/frame_4.png.partial",
                             "night/sky.bin",
                             "tree/b/2.raw",
                             "tree/b/10.raw",
                             "tree/a/deep/x.pgm",
                             "tree/a/1.npy",
                             "tree/.git/o.png",
                             "a[1].png",
                             "a1.png",
                             "r_{1..2}.png",
                             "r_1.png",
                             "s_08.pgm",
                             "s_10.pgm",
                             "@x.png",
                             "\xC3\xA9t\xC3\xA9.png"}) {
      make(name);
    }
  }
  ~Inputs() override { fs::current_path(before_); }

  static void make(const std::string& name, const std::string& content = "") {
    const fs::path path = path_of(name);
    if (path.has_parent_path()) fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
  }

  static InputList list(const Words& words) { return list_inputs({.words = words}); }

  /// "path" or "path|folder" of each input.
  static Words found(const InputRequest& request) {
    Words names;
    for (const Input& input : list_inputs(request).inputs) {
      names.push_back(text(input.path));
      if (!input.folder.empty()) names.back() += "|" + text(input.folder);
    }
    return names;
  }

  fs::path before_ = fs::current_path();
  TemporaryFolder folder_;
};

TEST_F(Inputs, AreWhatTheWordsStandFor) {
  make("list.txt", "\xEF\xBB\xBF# frames\r\n\r\n  # more\nnight/frame_2.png\r\ns_{08..10x2}.pgm\n");
  struct Case {
    InputRequest request;
    Words expected;
  };
  const Words night = {"night/frame_1.TIF", "night/frame_2.png", "night/frame_10.png"};
  const Words tree = {"tree/a/1.npy|a", "tree/a/deep/x.pgm|a/deep", "tree/b/2.raw|b",
                      "tree/b/10.raw|b"};
  const Case cases[] = {
      {{.words = {"night/sky.bin", "gone.png"}}, {"night/sky.bin", "gone.png"}},
      {{.words = {"night"}}, night},
      {{.words = {"night/"}, .headerless = true}, {night[0], night[1], night[2], "night/sky.bin"}},
      {{.words = {"night/frame_10.png", "./night", "night/../night/frame_2.png"}},
       {"night/frame_10.png", "./night/frame_1.TIF", "./night/frame_2.png"}},
      {{.words = {"tree"}, .recursive = true}, tree},
      {{.words = {"tree/b"}, .recursive = true}, {"tree/b/2.raw", "tree/b/10.raw"}},
      {{.words = {"tree/**"}}, tree},
      {{.words = {"tree/**/[!b-z]/*"}}, {"tree/a/1.npy|a"}},
      {{.words = {"t*/b/1?.raw"}}, {"tree/b/10.raw|tree/b"}},
      {{.words = {"tree/*/2.raw"}}, {"tree/b/2.raw|b"}},
      {{.words = {"nig*"}}, {night[0] + "|night", night[1] + "|night", night[2] + "|night"}},
      {{.words = {"night/.f*"}}, {"night/.frame_3.png"}},
      {{.words = {"a[1].png"}}, {"a[1].png"}},
      {{.words = {"./a[0-1].png"}}, {"./a1.png"}},
      {{.words = {"?t?.png"}}, {"\xC3\xA9t\xC3\xA9.png"}},
      {{.words = {"r_{1..2}.png"}}, {"r_{1..2}.png"}},
      {{.words = {"./r_{0..1}.png"}}, {"./r_0.png", "./r_1.png"}},
      {{.words = {"{s..t}.png"}}, {"{s..t}.png"}},
      {{.words = {"night/frame_{2..2}.p*"}}, {"night/frame_2.png"}},
      {{.words = {"@list.txt", "-"}}, {"night/frame_2.png", "s_08.pgm", "s_10.pgm", "-"}},
      {{.words = {"./@x.png"}}, {"./@x.png"}},
      {{.words = {"night", "tree"}, .recursive = true, .skip = {"*_1*", "tree/a/**", "??.raw"}},
       {"night/frame_2.png", "tree/b/2.raw|b"}},
  };
  for (const auto& [request, expected] : cases) {
    EXPECT_EQ(found(request), expected) << request.words[0];
  }
}

TEST_F(Inputs, LeaveOwnResultsOutUnlessTheyAreNamed) {
  const auto is_own_result = [](const fs::path& path) { return path.extension() == ".png"; };
  for (const auto& [word, inputs, own_results, skipped] : {std::tuple{"night", 0u, 2u, 1u},
                                                           {"night/*", 4u, 2u, 1u},
                                                           {"night/frame_2.png", 1u, 0u, 0u}}) {
    const InputList found = list_inputs(
        {.words = {word, "s_08.pgm"}, .skip = {"*.TIF"}, .is_own_result = is_own_result});
    EXPECT_EQ(found.inputs.size(), inputs + 1) << word;
    EXPECT_EQ(found.own_results, own_results) << word;
    EXPECT_EQ(found.skipped, skipped) << word;
  }
}

TEST_F(Inputs, SayWhatCannotBeMeant) {
  make("nested.txt", "@list.txt\n");
  make("wide.txt", std::string("\xFF\xFE"
                               "a\0",
                               4));
  fs::create_directories("empty");
  const std::pair<Words, std::string> cases[] = {
      {{""}, "is empty"},
      {{"tree"}, "-r takes the frames in them"},
      {{"empty"}, "there are no frames in empty; looked for files that end in .png, .tiff, .tif"},
      {{"a1.png", "night/*.jpg"}, "no file that matches night/*.jpg"},
      {{"gone/*.png"}, "no file that matches"},
      {{"q_{1..3}.png"}, "range q_{1..3}.png, from q_1.png to q_3.png"},
      {{"q_{1..3x0}.png"}, "step of 0"},
      {{"{0..9999}{0..9999}"}, "too many names"},
      {{"{1..99999999999999999999}"}, "too large"},
      {{"-", "a1.png", "-"}, "once"},
      {{"@gone.txt"}, "cannot read the list gone.txt"},
      {{"@night"}, "cannot read the list night"},
      {{"@nested.txt"}, "names the list list.txt"},
      {{"@wide.txt"}, "UTF-8"},
  };
  for (const auto& [words, part] : cases) {
    EXPECT_PRED2(contains, error_of([&words = words] { list(words); }), part) << words.back();
  }
  EXPECT_PRED2(contains, error_of([] {
                 list_inputs({.words = {"night"},
                              .skip = {"*.TIF"},
                              .is_own_result = [](const fs::path&) { return true; }});
               }),
               "--skip leaves 1 out, and 2 are results");
}

#if !defined(_WIN32)
TEST_F(Inputs, KnowPipesLinksAndClosedFolders) {
  ASSERT_EQ(mkfifo("night/frame_5.png", 0600), 0);
  EXPECT_EQ(list({"night"}).inputs.size(), 3u);
  EXPECT_EQ(list({"night/*.png"}).inputs.size(), 2u);
  EXPECT_PRED2(contains, error_of([] { list({"night/frame_5.png"}); }),
               "night/frame_5.png is a pipe; give its frames to standard input: "
               "kv-polarize transform - < night/frame_5.png");
  EXPECT_PRED2(contains, error_of([] { list({"/dev/null"}); }), "is a device");
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const std::string open_pipe = "/dev/fd/" + std::to_string(ends[0]);
  EXPECT_EQ(found({.words = {open_pipe}}), Words{open_pipe});

  // Up, down, to a neighbour that comes later, and out; a link to nothing is a lost frame.
  fs::create_directory_symlink("../..", "tree/a/up");
  fs::create_directory_symlink("a", "tree/aa");
  fs::create_directory_symlink("../night", "tree/c");
  fs::create_symlink("2.raw", "tree/b/3.raw");
  fs::create_symlink("gone", "tree/b/4.raw");
  EXPECT_EQ(found({.words = {"tree"}, .recursive = true}),
            (Words{"tree/a/1.npy|a", "tree/a/deep/x.pgm|a/deep", "tree/b/2.raw|b", "tree/b/4.raw|b",
                   "tree/b/10.raw|b", "tree/c/frame_1.TIF|c", "tree/c/frame_2.png|c",
                   "tree/c/frame_10.png|c"}));
  if (geteuid() == 0) return;  // who reads every folder
  fs::permissions("tree/b", fs::perms::none);
  EXPECT_PRED2(contains, error_of([] { list_inputs({.words = {"tree"}, .recursive = true}); }),
               "cannot read the folder tree/b");
  fs::permissions("tree/b", fs::perms::owner_all);
}
#endif

TEST(NaturalOrder, ReadsNumbersByTheirValues) {
  const Words sorted = {
      "a", "a0",  "a01",  "a1",   "a1b", "a2", "a10", "a10.5", "a18446744073709551617",
      "b", "b00", "c1d2", "c1d10"};
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    for (std::size_t k = 0; k < sorted.size(); ++k) {
      EXPECT_EQ(naturally_before(sorted[i], sorted[k]), i < k) << sorted[i] << " " << sorted[k];
    }
  }
}

TEST(RangedName, CountsWithWidthsAndSteps) {
  const std::pair<std::string, Words> cases[] = {
      {"{8..11}", {"8", "9", "10", "11"}},
      {"f{08..11x2}.png", {"f08.png", "f10.png"}},
      {"{0..7..3}", {"0", "3", "6"}},
      {"{10..08..1}", {"10", "09", "08"}},
      {"{0..1}-{000..1}", {"0-000", "0-001", "1-000", "1-001"}},
      {"{1..}{..2}{a..b}{1..2x}", {}},
      {"{-1..2}", {}},
  };
  for (const auto& [text, expected] : cases) {
    Words names;
    if (const auto range = RangedName::in(text)) {
      for (std::size_t i = 0; i < range->count(); ++i) names.push_back(range->at(i));
    }
    EXPECT_EQ(names, expected) << text;
  }
}

TEST(Pattern, MatchesNamesAndPaths) {
  struct Case {
    const char *pattern, *path;
    bool expected;
  };
  const Case cases[] = {
      {"*", "", true},
      {"a*b*c", "aXbXbXc", true},
      {"a*b*c", "aXcXb", false},
      {"[]x]", "]", true},
      {"[!]x]", "]", false},
      {"[^a-c]", "d", true},
      {"[a-]", "-", true},
      {"[a", "[a", true},
      {"[a", "a", false},
      {"?", "\xF0\x9F\x8C\x8C", true},
      {"?", "\xFF", true},
      {"??", "\xC3\xA9", false},
      {"[\xC3\xA0-\xC3\xAF]", "\xC3\xA9", true},
      {"*", "a/b", false},
      {"**/b", "b", true},
      {"**/b", "a/a/b", true},
      {"**/a/*/**/z", "a/a/y/x/z", true},
      {"**/a/*/**/z", "a/z", false},
      {"a/**", "a/b/c", true},
  };
  for (const auto& [pattern, path, expected] : cases) {
    EXPECT_EQ(PathPattern(pattern).matches(path), expected) << pattern << " " << path;
  }
  // Stars that fail late cost no more than their product with the name.
  std::string stars;
  for (int i = 0; i < 100; ++i) stars += "*a";
  EXPECT_FALSE(NamePattern(stars + "b").matches(std::string(10000, 'a')));
}

}  // namespace

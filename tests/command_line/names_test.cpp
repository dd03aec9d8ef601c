// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// What results are called, and whether two have one name.
#include <gtest/gtest.h>

#include "command_line/options/values.h"
#include "command_line/outputs/collisions.h"
#include "command_line/outputs/name_template.h"
#include "command_line/path_text.h"
#include "platform/file_names.h"
#include "toolkit/error_of.h"
#include "toolkit/temporary_folder.h"

using namespace kv::polarization;
namespace fs = std::filesystem;

namespace {

TEST(NameTemplate, PutsTheFramesPlaceIntoNames) {
  const NameParts frame{"sky", "night/first", "dolp", 7, 120, 41};
  const NameParts single{.name = "\xC3\xA9t\xC3\xA9", .folder = "", .plane = "dolp"};
  struct Case {
    const char* text;
    const NameParts& parts;
    const char* expected;
  };
  const Case cases[] = {
      {"{name}_{plane}", frame, "sky_dolp"},
      {"{folder}/{name}", frame, "night/first/sky"},
      {"{folder}/{name}", single, "\xC3\xA9t\xC3\xA9"},
      {"x/{folder}/{name}", single, "x/\xC3\xA9t\xC3\xA9"},
      {"{page}", frame, "007"},
      {"{page:05}", frame, "00007"},
      {"{page:2}", frame, "007"},
      {"{name}_{page}", single, "\xC3\xA9t\xC3\xA9_1"},
      {"{index}-{index:04}", frame, "41-0041"},
      {"{{{name}}}{{name}}", frame, "{sky}{name}"},
      {"all..", frame, "all.."},
  };
  for (const auto& [text, parts, expected] : cases) {
    EXPECT_EQ(text_of(NameTemplate(text).path_of(parts).generic_u8string()), expected) << text;
  }
  EXPECT_TRUE(NameTemplate("{plane}/x{index:3}").has("index"));
  EXPECT_FALSE(NameTemplate("{plane}/{{page}}").has("page"));
}

TEST(NameTemplate, RefusesWhatCannotNameResults) {
  const std::pair<std::string, std::string> cases[] = {
      {"", "it is empty"},
      {"/x", "without / before"},
      {"x/", "ends with a folder"},
      {"x//y", "folder without a name"},
      {"../x", "the folder .."},
      {"x/./y", "the folder ."},
      {"x\ny", "control character"},
      {"{stem}", "no placeholder {stem}; placeholders are {name}, {folder}, {plane}, {page}"},
      {"{}", "no placeholder {}"},
      {"{name", "{ without }"},
      {"name}", "} without {"},
      {"{name:3}", "{name} has no width"},
      {"{page:}", "of the width, ''"},
      {"{page:0}", "from 1 to 18"},
      {"{page:99}", "from 1 to 18"},
  };
  for (const auto& [text, part] : cases) {
    try {
      const NameTemplate refused(text);
      ADD_FAILURE() << text;
    } catch (const BadValue& error) {
      EXPECT_PRED2(contains, error.what(), part);
    }
  }
}

// File systems take 255 bytes, of which the longest endings of results take 5.
TEST(NameTemplate, RefusesNamesThatNoFileCanHave) {
  const auto error_with = [](const std::string& text, const std::string& name) {
    return error_of([&] { NameTemplate(text).path_of({.name = name, .folder = name}); });
  };
  EXPECT_EQ(error_with("{name}", std::string(250, 'x')), "");
  EXPECT_EQ(error_with("{folder}/x", std::string(255, 'x')), "");
  EXPECT_PRED2(contains, error_with("{name}", std::string(251, 'x')), "longer than the 255 bytes");
  EXPECT_PRED2(contains, error_with("{folder}/x", std::string(256, 'x')), "255");
  EXPECT_PRED2(contains, error_with("{name}", ""), "is empty");
  EXPECT_PRED2(contains, error_with("x/{plane}", "x"), "is empty");
  EXPECT_PRED2(contains, error_with("{name}/x", ".."), "leads out");
}

TEST(NameRegister, FindsResultsOfOneName) {
  const TemporaryFolder folder;
  write_content(folder / "a.pgm", "");
  const std::vector<Input> inputs = {{folder / "a.pgm", {}}, {"-", {}}, {folder / "c.pgm", {}}};
  const std::vector<std::vector<fs::path>> results = {
      {folder / "out/x.png", folder / "out/X.tiff"},
      {folder / "out/y.png", folder / "out/y.png"},
      {folder / "out/z.png", folder / "./out/../out/x.png"}};
  NameRegister names(inputs, [&](std::size_t owner) { return results[owner]; });
  const auto error_when_added = [&](const fs::path& result, std::size_t owner) {
    return error_of([&] { names.add(result, owner); });
  };
  EXPECT_EQ(error_when_added(results[0][0], 0), "");
  EXPECT_EQ(error_when_added(results[0][1], 0), "");
  EXPECT_EQ(error_when_added(results[1][0], 1), "");
  EXPECT_PRED2(contains, error_when_added(results[1][1], 1), "two results of standard input");
  EXPECT_EQ(error_when_added(results[2][0], 2), "");
  const std::string error = error_when_added(results[2][1], 2);
  EXPECT_PRED2(contains, error, "a.pgm and of ");
  EXPECT_PRED2(contains, error, "c.pgm would have the same name, ");
  EXPECT_PRED2(contains, error_when_added(folder / "out/../a.pgm", 2), "would replace an input");
  EXPECT_EQ(error_when_added(folder / "out/x.TIFF", 2).empty(), !kv::platform::kNamesIgnoreCase);
}

TEST(HashSet, KnowsWhatItHolds) {
  HashSet hashes;
  // Multiples of a power of two meet in the same slots.
  for (const std::uint64_t factor : {1ULL, 1ULL << 32}) {
    for (std::uint64_t i = 2; i < 5000; ++i) EXPECT_TRUE(hashes.insert(i * factor));
  }
  EXPECT_TRUE(hashes.insert(0));
  for (std::uint64_t i = 0; i < 5000; ++i) {
    EXPECT_EQ(hashes.contains(i << 32), i != 1);
    EXPECT_FALSE(i != 1 && hashes.insert(i << 32));
  }
}

}  // namespace

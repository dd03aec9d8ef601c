// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Help, manual and completion, as they follow from the records of the options.
#include <gtest/gtest.h>

#include <CLI/CLI.hpp>

#include "command_line/command.h"
#include "kv/image_files/image_format.h"
#include "tool.h"

using namespace kv::polarization;

namespace {

const Names kForms = {"text", "man", "markdown"};

TEST(Records, TellEveryOptionOfTheParser) {
  const Tool tool;
  CLI::App app;
  const Commands commands = make_commands(app);
  ASSERT_FALSE(commands.empty());
  for (const auto& command : commands) {
    const std::string& name = command->page().name;
    const ToolResult result = tool.run(name + " --help");
    EXPECT_EQ(result.status, 0) << name << ": " << result.error;
    const std::string& help = result.out;
    EXPECT_FALSE(command->page().summary.empty()) << name;
    EXPECT_FALSE(command->page().examples.empty()) << name;
    for (const CLI::Option* option : app.get_subcommand(name)->get_options()) {
      const bool is_positional = option->get_positional();
      const std::string key = is_positional ? option->get_name(true) : option->get_lnames().at(0);
      if (key == "help" || option->get_group().empty()) continue;
      const auto& records = std::as_const(*command).options().records();
      const auto record = std::ranges::find(records, key, key_of);
      ASSERT_NE(record, records.end()) << name << " " << key;
      EXPECT_FALSE(record->summary.empty()) << name << " " << key;
      EXPECT_FALSE(record->summary.ends_with(".")) << name << " " << key;
      const bool takes_value = !is_positional && option->get_items_expected_min() > 0;
      EXPECT_EQ(!record->value.empty() && !is_positional, takes_value) << name << " " << key;
      EXPECT_PRED2(contains, help, (is_positional ? "" : "--") + key);
    }
  }
}

TEST(Help, KeepsToTheWidthOfPages) {
  const Tool tool;
  CLI::App app;
  for (const auto& command : make_commands(app)) {
    const std::string help = tool.run(command->page().name + " --help").out;
    std::istringstream lines(help.substr(0, help.find("\nExamples:")));
    for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 80u) << line;
  }
}

TEST(Manual, HasAllThatRecordsTellInEveryForm) {
  const Tool tool;
  for (const std::string& form : kForms) {
    SCOPED_TRACE(form);
    const ToolResult page = tool.run("manual transform --as " + form);
    EXPECT_EQ(page.status, 0);
    std::string text = page.out;
    for (const char mark : {'\\', '`', '\n'}) std::erase(text, mark);
    for (const char* part :
         {"--bit-depth", "--no-bit-depth", "angle_even_light", "65535", "Write planes and pictures",
          "whatever --planes and --output-max", "transform frame.png -o planes"}) {
      const bool is_bold = form == "man" && contains(part, "whatever");
      EXPECT_PRED2(contains, text, is_bold ? "whatever fB--planesfR and" : part);
    }
    std::string whole = tool.run("manual --as " + form).out;
    std::erase(whole, '\\');
    for (const char* part : {"130", "NAME=?", "version", "no-dolp-white", "not-mirrored"}) {
      EXPECT_PRED2(contains, whole, part);
    }
  }
  EXPECT_PRED2(contains, tool.run("manual tarnsform").error, "transform");
  EXPECT_EQ(tool.run("manual tarnsform").status, 2);
}

TEST(Manual, WritesPagesAsFiles) {
  const Tool tool;
  EXPECT_EQ(tool.run("manual --as man -o a/man1").out, "");
  EXPECT_EQ(tool.content("a/man1/kv-polarize-transform.1"),
            tool.run("manual transform --as man").out);
  CLI::App app;
  EXPECT_EQ(tool.files_in("a/man1").size(), make_commands(app).size() + 1);
  tool.write("file", "");
  EXPECT_EQ(tool.run("manual -o file/x").status, 2);
}

TEST(Manual, IsThePageAmongTheDocuments) {
  if (!traits_of(ImageFormat::png).available() || !traits_of(ImageFormat::tiff).available()) {
    GTEST_SKIP() << "this build lacks formats that the page tells of";
  }
  EXPECT_TRUE(Tool().run("manual --as markdown").out == content_of(KV_REFERENCE_PAGE))
      << "docs/kv-polarize.md is out of date: run scripts/reference";
}

#if !defined(_WIN32)
bool has_program(const std::string& name) {
  return std::system(("command -v " + name + " >/dev/null").c_str()) == 0;
}

TEST(Manual, FormatsWithoutWarnings) {
  if (!has_program("groff")) GTEST_SKIP() << "no groff";
  const Tool tool;
  tool.write("page.1", tool.run("manual --as man").out);
  tool.run("--version", "groff -man -ww -z -Tutf8 page.1 >warnings 2>&1; ");
  EXPECT_EQ(tool.content("warnings"), "");
}

/// What bash offers for the last of these words, a line each; in angle brackets what it leaves to
/// readline.
std::string offered(const Tool& tool, const std::string& words) {
  tool.write("try.bash", "compopt() { echo \"<$2>\"; }\n" + tool.run("completion bash").out +
                             "COMP_WORDS=(kv-polarize " + words +
                             ")\n"
                             "COMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n"
                             "_kv_polarize\n"
                             "printf '%s\\n' \"${COMPREPLY[@]}\"\n");
  tool.run("--version", "bash try.bash >offered 2>&1; ");
  std::string text = tool.content("offered");
  std::ranges::replace(text, '\n', ' ');
  return text;
}

TEST(Completion, OffersWhatFitsInBash) {
  if (!has_program("bash")) GTEST_SKIP() << "no bash";
  const Tool tool;
  const std::pair<const char*, const char*> cases[] = {
      {"tr", "transform "},
      {"--v", "--version "},
      {"transform --ph", "--phase "},
      {"transform --no-pic", "--no-pictures "},
      {"transform --phase ''", "0 45 90 135 "},
      {"transform --phase = 4", "45 "},
      {"transform --phase =", "0 45 90 135 "},
      {"transform --planes do", "<nospace> dolp "},
      {"transform --planes dolp,a", "<nospace> dolp,azimuth "},
      {"transform --planes dolp,mean,d", "<nospace>  "},
      {"transform --planes = azimuth,do", "<nospace> azimuth,dolp "},
      {"transform -o ''", "<dirnames>  "},
      {"transform --calibration ''", "<default>  "},
      {"transform --width ''", " "},
      {"transform a.tiff ''", "<default>  "},
      {"manual tr", "transform "},
      {"completion f", "fish "},
  };
  for (const auto& [words, expected] : cases) EXPECT_EQ(offered(tool, words), expected) << words;
}

// Those that are installed; bash checks its own script above.
TEST(Completion, IsASoundScript) {
  const Tool tool;
  for (const auto& [shell, check] : {std::pair{"zsh", "zsh -n "}, {"fish", "fish --no-execute "}}) {
    if (!has_program(shell)) continue;
    tool.write("script", tool.run(std::string("completion ") + shell).out);
    tool.run("--version", std::string(check) + "script >faults 2>&1; ");
    EXPECT_EQ(tool.content("faults"), "") << shell;
  }
  EXPECT_EQ(tool.run("completion tcsh").status, 2);
}
#endif

}  // namespace

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/tool_page.h"

#include "command_line/options/help_text.h"
#include "command_line/options/text_layout.h"

namespace kv::polarization {
namespace {

constexpr GlossaryEntry kHabits[] = {
    {"--NAME VALUE, --NAME=VALUE", "Both forms are understood."},
    {"--NAME=?", "Lists the values that the option takes, and does nothing else."},
    {"--no-NAME",
     "Undoes the option. Of the same option, and of what undoes it, the last one on "
     "the command line wins."},
    {"LIST", "Words with commas between them, without spaces."},
    {"--", "What comes behind it is no option, even when it begins with a dash."},
};

constexpr GlossaryEntry kExitStatuses[] = {
    {"0", "All went well."},
    {"1", "Some of the work failed; of comparisons: there is a difference."},
    {"2", "The command line is wrong, or nothing could be done."},
    {"130", "Stopped by Ctrl-C."},
};

}  // namespace

const CommandPage& tool_page() {
  static const CommandPage page{
      .name = kProgram,
      .summary = "Turn raw frames of polarization cameras into planes and pictures",
      .details =
          "A polarization camera sees the scene through a mosaic of linear polarizers at 0, 45, 90 "
          "and 135 degrees. From its raw frames come planes of Stokes values, of the angle and of "
          "the degree of linear polarization (DoLP), and pictures of them.\n"
          "\n"
          "The angle is 0 along the rows of the image and grows counter-clockwise.\n"
          "\n"
          "Options are taken from the command line alone: no environment variable changes what a "
          "command does.",
      .examples = {"kv-polarize transform frame.png -o planes", "kv-polarize transform --help",
                   "kv-polarize transform --planes=?", "kv-polarize manual transform"}};
  return page;
}

const std::vector<OptionRecord>& tool_options() {
  static const std::vector<OptionRecord> records{
      help_record(),
      {.names = "--version", .summary = "Show the version, and how this build was made"}};
  return records;
}

std::span<const GlossaryEntry> common_habits() { return kHabits; }

std::span<const GlossaryEntry> exit_statuses() { return kExitStatuses; }

std::string tool_help(const Commands& commands) {
  const std::size_t width = text_width();
  const CommandPage& page = tool_page();
  std::string text = wrapped(page.summary + ".", 0, width);
  text += std::string("\nUsage:\n  ") + kProgram + " COMMAND [ARGUMENTS] [OPTIONS]\n\nCommands:\n";
  for (const auto& command : commands) {
    text += beside(command->page().name, command->page().summary, 16, width);
  }
  text += help_list("Options", tool_options(), width) + "\nExamples:\n";
  for (const std::string& example : page.examples) text += "  " + example + "\n";
  text += "\n" + wrapped(
                     "kv-polarize COMMAND --help tells the options of a command, kv-polarize "
                     "manual everything.",
                     0, width);
  text += "\nExit status:\n";
  for (const GlossaryEntry& status : kExitStatuses) {
    text += beside(status.term, status.meaning, 8, width);
  }
  return text;
}

}  // namespace kv::polarization

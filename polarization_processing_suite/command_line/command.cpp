// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/command.h"

#include <CLI/CLI.hpp>
#include <utility>

#include "command_line/options/text_layout.h"

namespace kv::polarization {

Command::Command(CLI::App& app, CommandPage page)
    : page_(std::move(page)),
      command_(*app.add_subcommand(page_.name, page_.summary)),
      options_(command_) {
  command_.formatter_fn([this](const CLI::App*, const std::string&, CLI::AppFormatMode) {
    return help_text(page_, options_.records(), text_width());
  });
}

bool Command::chosen() const { return command_.parsed(); }

}  // namespace kv::polarization

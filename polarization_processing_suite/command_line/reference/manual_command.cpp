// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <iostream>

#include "command_line/exit_status.h"
#include "command_line/options/text_layout.h"
#include "command_line/options/values.h"
#include "command_line/reference/manual.h"
#include "command_line/tool_page.h"
#include "kv/image_files/pending_file.h"
#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

/// A form of the manual, by the name that users give it.
struct Form {
  std::string_view name;
  const char* ending;  ///< of its files
  std::unique_ptr<PageWriter> (*make_writer)();
};

const Form kForms[] = {
    {"text", ".txt", [] { return make_text_writer(text_width()); }},
    {"man", ".1", [] { return make_man_writer(std::string(kProgram) + " " KV_VERSION); }},
    {"markdown", ".md", make_markdown_writer},
};

std::vector<std::string> form_names() {
  std::vector<std::string> names;
  for (const Form& form : kForms) names.emplace_back(form.name);
  return names;
}

const Form& form_named(const std::string& name) {
  choice_of(name, form_names());
  return *std::ranges::find(kForms, name, &Form::name);
}

CommandPage manual_page() {
  return {.name = "manual",
          .summary = "Show the manual of the tool or of a command",
          .details =
              "The manual tells all that --help tells, and what is behind it. Without a "
              "command it is the page of the tool, and those of all commands behind it.",
          .examples = {"kv-polarize manual transform", "kv-polarize manual | less",
                       "kv-polarize manual --as man -o /usr/local/share/man/man1"}};
}

class ManualCommand : public Command {
 public:
  explicit ManualCommand(CLI::App& app) : Command(app, manual_page()) {
    options().add_argument({.names = "COMMAND",
                            .value = "NAME",
                            .summary = "The command whose page to show",
                            .completion = Completion::command},
                           text_into(name_));
    options().add({.names = "--as",
                   .value = "FORM",
                   .summary = "What the manual is written as",
                   .details = "Text is as wide as the terminal, or has 80 columns. Pages for man "
                              "are written in roff.",
                   .choices = form_names(),
                   .initial = std::string(form_->name)},
                  [this](const std::string& name) { form_ = &form_named(name); });
    options().add({.names = "-o,--output",
                   .value = "FOLDER",
                   .summary = "Folder for files, one a page, in the place of showing them",
                   .details = "Their names are kv-polarize.1, kv-polarize-transform.1 and so on, "
                              "with .txt or .md in other forms. The folder is made if missing.",
                   .completion = Completion::folder},
                  path_into(folder_), [this] { folder_.reset(); });
  }

  int run() override {
    CLI::App app;
    const Commands all = make_commands(app);
    const std::unique_ptr<PageWriter> writer = form_->make_writer();
    if (name_.empty()) {
      write_tool_page(all, *writer);
      finish_page(*writer, kProgram);
    }
    for (const auto& command : chosen(all)) {
      write_command_page(*command, *writer);
      finish_page(*writer, std::string(kProgram) + "-" + command->page().name);
    }
    std::cout << writer->take() << std::flush;
    return exit_success;
  }

 private:
  std::vector<const Command*> chosen(const Commands& all) const {
    std::vector<std::string> names;
    std::vector<const Command*> found;
    for (const auto& command : all) {
      names.push_back(command->page().name);
      if (name_.empty() || name_ == names.back()) found.push_back(command.get());
    }
    if (found.empty()) choice_of(name_, names);
    return found;
  }

  /// A page of its own, if there are to be files.
  void finish_page(PageWriter& writer, const std::string& name) const {
    if (!folder_) return;
    std::error_code failure;
    std::filesystem::create_directories(*folder_, failure);
    if (failure) {
      throw Fault(FaultKind::file, "the folder " + folder_->string() +
                                       " cannot be made; choose one that you may write to");
    }
    PendingFile file(*folder_ / (name + form_->ending));
    const std::string text = writer.take();
    file.write(text.data(), text.size());
    file.close();
    file.publish();
  }

  std::string name_;
  const Form* form_ = &kForms[0];
  std::optional<std::filesystem::path> folder_;
};

}  // namespace

std::unique_ptr<Command> make_manual_command(CLI::App& app) {
  return std::make_unique<ManualCommand>(app);
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/reference/manual.h"

#include "command_line/tool_page.h"

namespace kv::polarization {
namespace {

std::vector<Term> terms_of(const OptionRecord& record) {
  if (is_argument(record)) return {{"", usage_of(record)}};
  std::vector<Term> terms;
  for (const std::string& name : names_of(record)) terms.push_back({name});
  terms.back().value = record.value;
  if (record.can_be_undone) terms.push_back({undoing_name_of(record)});
  return terms;
}

void write_records(const std::vector<OptionRecord>& records, PageWriter& writer) {
  for (const OptionRecord& record : in_reading_order(records)) {
    const std::string details = record.details.empty() ? "" : "\n\n" + record.details;
    writer.entry(terms_of(record), told_of(record, "`") + "." + details);
  }
}

void write_examples(const CommandPage& page, PageWriter& writer) {
  if (page.examples.empty()) return;
  writer.section("Examples");
  writer.command_lines(page.examples);
}

void write_glossary(std::span<const GlossaryEntry> entries, PageWriter& writer) {
  for (const auto& [term, meaning] : entries) writer.entry({{term}}, meaning);
}

}  // namespace

void write_tool_page(const Commands& commands, PageWriter& writer) {
  const CommandPage& page = tool_page();
  writer.begin(page.name, page.summary);
  writer.section("Synopsis");
  writer.synopsis(page.name + " COMMAND [ARGUMENTS] [OPTIONS]");
  writer.section("Description");
  writer.text(page.details);
  writer.section("Commands");
  for (const auto& command : commands) {
    writer.entry({{command->page().name}}, command->page().summary + ".");
  }
  writer.section("Options");
  write_records(tool_options(), writer);
  writer.section("Options of all commands");
  write_glossary(common_habits(), writer);
  write_examples(page, writer);
  writer.section("Exit status");
  write_glossary(exit_statuses(), writer);
}

void write_command_page(const Command& command, PageWriter& writer) {
  const CommandPage& page = command.page();
  std::vector<OptionRecord> records = command.options().records();
  writer.begin(tool_page().name + " " + page.name, page.summary);
  writer.section("Synopsis");
  writer.synopsis(usage_of(page, records));
  if (!page.details.empty()) {
    writer.section("Description");
    writer.text(page.details);
  }
  writer.section("Options");
  records.push_back(help_record());
  write_records(records, writer);
  write_examples(page, writer);
  writer.refer(tool_page().name);
}

}  // namespace kv::polarization

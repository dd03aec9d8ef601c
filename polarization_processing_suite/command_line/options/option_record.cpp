// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/options/option_record.h"

#include "command_line/options/values.h"

namespace kv::polarization {

std::string key_of(const OptionRecord& record) {
  const std::size_t dashes = record.names.find("--");
  return dashes == std::string::npos ? record.names : record.names.substr(dashes + 2);
}

std::vector<std::string> names_of(const OptionRecord& record) { return split_list(record.names); }

std::string undoing_name_of(const OptionRecord& record) {
  return record.can_be_undone ? "--no-" + key_of(record) : "";
}

bool is_argument(const OptionRecord& record) { return !record.names.starts_with("-"); }

bool takes_list(const OptionRecord& record) { return record.value == "LIST"; }

}  // namespace kv::polarization

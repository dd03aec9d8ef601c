// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/version_text.h"

#include "command_line/options/help_text.h"

namespace kv::polarization {
namespace {

std::string joined(const NamedTexts& texts, char link) {
  std::string line;
  for (const auto& [name, text] : texts) {
    line += (line.empty() ? "" : ", ") + name + (text.empty() ? "" : link + text);
  }
  return line;
}

}  // namespace

std::string version_text(const Build& build) {
  std::string sets;
  for (const std::string_view set : build.instruction_sets) {
    sets.append(sets.empty() ? "" : ", ").append(set);
  }
  std::string lines = std::string(kProgram) + " " + std::string(build.version) + "\n";
  lines += "  compiler          " + std::string(build.compiler) + ", ";
  lines += std::string(build.flags) + "\n";
  lines += "  instruction sets  " + sets + "\n";
  lines += "  options           " + joined(build.options, '=') + "\n";
  lines += "  libraries         " + joined(build.libraries, ' ');
  return lines;
}

}  // namespace kv::polarization

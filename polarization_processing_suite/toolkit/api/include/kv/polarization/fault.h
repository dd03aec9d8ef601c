// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

#include "kevrinth_qrm_polarization_processor.h"

namespace kv::polarization {

/// What went wrong, for programs to act on.
enum class FaultKind : std::uint8_t {
  argument,    ///< a value that the call cannot take; nothing was computed or written
  state,       ///< an object that cannot do this now, such as a processor that was moved from
  memory,      ///< no memory of the size that was asked for
  file,        ///< a file that is missing, damaged, or cannot be written
  unsupported  ///< what this processor or this build cannot do, and files of a kind that none reads
};

/// What every function of the toolkit throws, and the only thing. what() is one line: what is
/// wrong, and what would be right.
class Fault : public std::runtime_error {
 public:
  /// The line is without an end of line.
  Fault(FaultKind kind, const std::string& line, std::optional<ProcessorStatus> status = {})
      : std::runtime_error(line), kind_(kind), status_(status) {}

  /// For programs, as the line is for people.
  FaultKind kind() const noexcept { return kind_; }

  /// What the library's call returned, where a call of the library failed.
  std::optional<ProcessorStatus> status() const noexcept { return status_; }

 private:
  FaultKind kind_;
  std::optional<ProcessorStatus> status_;
};

}  // namespace kv::polarization

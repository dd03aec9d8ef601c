// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "command_line/batch/file_hash.h"
#include "command_line/json_type.h"
#include "kv/polarization/mosaic.h"

namespace kv::polarization {

/// How a result was made. It holds no time and no name of a machine, so that equal runs write equal
/// bytes.
struct ProvenanceRecord {
  std::vector<std::string> command;  ///< words of a command line that makes this result alone
  std::string input;                 ///< the name of its frames
  std::optional<ContentIdentity> identity;
  std::optional<std::size_t> page;  ///< from 1 up; none for all of them
  Mosaic mosaic;
  int bit_depth = 0;  ///< of the first frame's samples, before any correction
  int output_max = 0;
  std::string calibration;  ///< name; empty without one
  std::optional<ContentIdentity> calibration_identity;
};

/// What the planes' low bits depend on beside all that: the library's tier, and the processor's
/// approximate reciprocals, which differ between makers.
struct MachineRecord {
  std::string tier;
  std::string reciprocals;

  bool operator==(const MachineRecord&) const = default;
};

/// Asked once.
const MachineRecord& this_machine();

/// Name and version of the program.
std::string software_name();

/// The record as JSON.
Json json_of(const ProvenanceRecord& record);

/// What a headerless file does not tell of its images.
struct ImageShape {
  int width = 0;
  int height = 0;
  int channels = 1;
  int bytes = 2;  ///< a sample: 1 or 2 of an unsigned number, 4 of a float
  std::size_t images = 1;
};

/// The file beside a result whose format has no place for texts, and what it holds: the record and
/// the shape, in a line with its end.
std::filesystem::path sidecar_of(const std::filesystem::path& result);
std::string sidecar_text(const std::string& record_line, const ImageShape& shape);

/// A path as UTF-8 text with / between folders; bytes that are no UTF-8 are shown as \xNN.
std::string json_text(const std::filesystem::path& path);

}  // namespace kv::polarization

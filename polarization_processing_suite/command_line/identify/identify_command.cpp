// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/identify/identify_command.h"

#include <iomanip>
#include <iostream>
#include <string>

#include "command_line/exit_status.h"
#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

Frame first_frame(const std::filesystem::path& file, const IdentifyOptions& options) {
  try {
    Frame frame = open_frames(file, options.raw_shape)->read(0);
    if (options.bit_depth) frame.bit_depth = *options.bit_depth;
    return frame;
  } catch (const Fault& fault) {
    throw Fault(fault.kind(), file.string() + ": " + fault.what());
  }
}

}  // namespace

int run_identify(const IdentifyOptions& options) {
  const Frame first = first_frame(options.files[0], options);
  const Frame second = first_frame(options.files[1], options);
  const MosaicIdentity found = identify_mosaic(first, second, options.light);
  for (const MosaicCandidate& candidate : found.candidates) {
    if (candidate.confidence < 0.0005) continue;
    std::cout << std::fixed << std::setprecision(1) << std::setw(5) << 100 * candidate.confidence
              << " %  --phase " << cell_angles(candidate.phase)[0]
              << (candidate.mirrored ? ", the image is mirrored" : "") << '\n';
  }
  std::cout << found.verdict << std::endl;
  return found.is_told ? exit_success : exit_some_failed;
}

}  // namespace kv::polarization

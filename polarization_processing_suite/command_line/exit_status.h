// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace kv::polarization {

/// Exit status of the process, as the tool's help lists them.
enum ExitStatus : int {
  exit_success = 0,
  exit_some_failed = 1,    ///< some of the work failed; comparisons: there is a difference
  exit_nothing_done = 2,   ///< the command line is wrong, or nothing could be done
  exit_interrupted = 130,  ///< stopped by Ctrl-C, as shells count it, or by another request to end
};

}  // namespace kv::polarization

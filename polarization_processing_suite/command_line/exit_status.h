#pragma once

namespace kv::polarization {

/// Exit status of the process, as the tool's help lists them.
enum ExitStatus : int {
  exit_success = 0,
  exit_failure = 1,        ///< a frame failed, or all of the work did
  exit_usage = 2,          ///< the command line is wrong; nothing was done
  exit_interrupted = 130,  ///< stopped by Ctrl-C, as shells count it
};

}  // namespace kv::polarization

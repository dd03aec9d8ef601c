#pragma once

namespace kv {

/// What the process tells its caller; the tool's help lists these.
enum ExitStatus : int {
  exit_success = 0,
  exit_failure = 1,        ///< a frame, or all of the work, failed
  exit_usage = 2,          ///< the command line is wrong; nothing was done
  exit_interrupted = 130,  ///< stopped by Ctrl-C, as shells count it
};

}  // namespace kv

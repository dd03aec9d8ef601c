#ifndef KV_COMMAND_LINE_PROCESS_H
#define KV_COMMAND_LINE_PROCESS_H

#include <string>

// What the tool needs of the operating system beyond the standard library.

namespace kv {

/// Whether a person is likely to watch the error stream.
bool error_stream_is_terminal();

/// From here on Ctrl-C only raises a flag, so that work ends between frames with nothing left half
/// done; a second one ends the process. A file that outgrows the user's limit becomes an ordinary
/// failed write.
void tame_signals();
bool interrupted();

/// For this process and the libraries that it loads from here on.
void set_environment(const char* name, const std::string& value);

/// Whether the process has loaded the library of that file name, without the system's ending.
bool has_loaded(const std::string& library);

}  // namespace kv

#endif

#ifndef KV_COMMAND_LINE_PROCESS_H
#define KV_COMMAND_LINE_PROCESS_H

// What the tool needs of the operating system beyond the standard library.

namespace kv {

/// Whether a person is likely to watch the error stream.
bool error_stream_is_terminal();

/// From here on Ctrl-C only raises a flag, so that work ends between frames with nothing left half
/// done; a second one ends the process. A file that outgrows the user's limit becomes an ordinary
/// failed write.
void tame_signals();
bool interrupted();

}  // namespace kv

#endif

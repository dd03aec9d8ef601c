#pragma once

namespace kv::platform {

/// Whether a person is likely to watch the error stream.
bool error_stream_is_terminal();

/// From here on Ctrl-C only raises the flag that `interrupted` reads, so that work can end at a
/// good place; a second Ctrl-C ends the process.
void defer_interrupts();
bool interrupted();

/// A file that outgrows the user's limit becomes an ordinary failed write.
void ignore_file_size_signal();

/// For this process and the libraries that it loads from here on. Call it before a thread starts.
void set_environment(const char* name, const char* value);

}  // namespace kv::platform

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace kv::platform {

/// Whether a person is likely to watch the error stream.
bool error_stream_is_terminal();

/// Columns of the terminal that the error stream goes to; 80 when it goes to none, or that does not
/// tell.
int terminal_columns();

/// From here on a wish to end the process only raises the flag that `interrupted` reads, so that
/// work can end at a good place: Ctrl-C, SIGTERM, and SIGHUP unless it was ignored before, as nohup
/// does it. Waits for a pipe end with EINTR. The second wish removes the files of register_file and
/// ends the process with status 128 + the signal's number: 130 for Ctrl-C.
void defer_interrupts();
bool interrupted();

/// Gives a process that was started without standard streams some that refuse everything: else the
/// next files that it opens would take their places, and get what is meant for people.
void fill_standard_streams();

/// A file that outgrows the user's limit becomes an ordinary failed write.
void ignore_file_size_signal();

/// So does a pipe whose reader has ended.
void ignore_broken_pipes();

/// Standard input gives bytes as they are, without a change of line ends.
void make_standard_input_binary();

bool output_stream_is_terminal();

/// Whether standard output is a pipe that nobody reads any more, as behind `| head`. Not told on
/// Windows.
bool output_reader_has_gone();

/// Processor time of this process so far, of all its threads, user and system, in seconds.
double processor_seconds();

/// The words of the command line behind the program's name, in UTF-8 where the system has them in a
/// form of its own; the console is made to show UTF-8 there.
std::vector<std::string> command_line_words(int argc, char** argv);

/// Of this process; a forked one has another.
int process_number();

/// For this process and the libraries that it loads from here on. Call it before a thread starts.
void set_environment(const char* name, const char* value);

}  // namespace kv::platform

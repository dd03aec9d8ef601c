#include "platform/process.h"

#include <io.h>

#include <cstdio>
#include <cstdlib>

namespace kv::platform {

bool error_stream_is_terminal() { return _isatty(_fileno(stderr)) != 0; }

void set_environment(const char* name, const char* value) { _putenv_s(name, value); }

}  // namespace kv::platform

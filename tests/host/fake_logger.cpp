// A logger that records its calls. The build names the exports: a variant without one of them has
// it under another name.
#include <cstdint>

#include "fake_export.h"
#include "recorder.h"

namespace {

using kv::test::Function;
using kv::test::record;
using kv::test::succeeds;

char the_log;

/// Records that the library is loaded, and that it is unloaded.
struct Presence {
  Presence() { record("load logger"); }
  ~Presence() { record("unload logger"); }
} presence;

}  // namespace

KV_FAKE_EXPORT void* GET_LOG(const char* module_name, const char* group_name,
                             const char* config_file_name) {
  record("qrm_get_log '%s' '%s' '%s'", module_name, group_name, config_file_name);
  return succeeds(Function::get_log) ? &the_log : nullptr;
}

KV_FAKE_EXPORT std::int32_t LOG(void* log, std::int32_t severity, const char* file,
                                std::int32_t line, const char* function, const char* message) {
  record("qrm_log %d %s %s | %s", static_cast<int>(severity), file, function, message);
  if (log != &the_log) record("this log is not the one given");
  if (line <= 0) record("the line has no number");
  return succeeds(Function::log) ? 0 : 5;
}

KV_FAKE_EXPORT void FREE_LOG(const char* module_name, const char* group_name) {
  record("qrm_free_log '%s' '%s'", module_name, group_name);
  succeeds(Function::free_log);
}

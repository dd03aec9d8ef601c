// A vector module that records its calls and writes nothing. The build gives the instruction set
// and the names of the exports: a variant without one of them has it under another name.
#include <cstdint>
#include <cstring>
#include <string_view>

#include "fake_export.h"
#include "recorder.h"

namespace {

using kv::test::Function;
using kv::test::record;
using kv::test::succeeds;

constexpr Function kInitialize = std::string_view(INSTRUCTION_SET) == "avx512"
                                     ? Function::initialize_avx512
                                     : Function::initialize_avx2;

/// Records that the library is loaded, and that it is unloaded.
struct Presence {
  Presence() { record("load " INSTRUCTION_SET); }
  ~Presence() { record("unload " INSTRUCTION_SET); }
} presence;

}  // namespace

KV_FAKE_EXPORT std::int32_t INITIALIZE() {
  record("initialize " INSTRUCTION_SET);
  return succeeds(kInitialize) ? 0 : 1;
}

// Nobody is to read the result.
KV_FAKE_EXPORT std::int32_t TRANSFORM(const void* request, const void* view,
                                      unsigned char sse41_available, const void* instance) {
  record("transform " INSTRUCTION_SET);
  kv::test::TransformCall call{};
  std::memcpy(call.request, request, sizeof call.request);
  std::memcpy(call.view, view, sizeof call.view);
  call.sse41_available = sse41_available;
  call.instance = static_cast<const unsigned char*>(instance);
  kv::test::record_transform(call);
  return 1;
}

KV_FAKE_EXPORT void TERMINATE() {
  record("terminate " INSTRUCTION_SET);
  succeeds(Function::terminate);
}

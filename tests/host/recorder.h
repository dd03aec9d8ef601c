#pragma once

// What the fake companions were asked, and what they are to do. A library of its own, so that the
// test and the fakes in its process share it. It allocates nothing: tests count allocations.

#include <cstddef>

#if defined(_WIN32)
#if defined(KV_RECORDER_BUILD)
#define KV_RECORDER_API __declspec(dllexport)
#else
#define KV_RECORDER_API __declspec(dllimport)
#endif
#else
#define KV_RECORDER_API __attribute__((visibility("default")))
#endif

namespace kv::test {

/// The functions of the fakes whose behaviour a test may choose.
enum class Function {
  get_log,
  log,
  free_log,
  initialize_avx512,
  initialize_avx2,
  terminate,
  count
};

enum class Behaviour { succeed, fail, throw_bad_alloc, throw_other };

/// The arguments of the last call of a vector module's transform: the records' bytes.
struct TransformCall {
  unsigned char request[96];
  const unsigned char* view[4];
  unsigned char sse41_available;
  const unsigned char* instance;
};

KV_RECORDER_API void set_behaviour(Function function, Behaviour behaviour);

/// Whether the function is to report success. Throws when it is to throw.
KV_RECORDER_API bool succeeds(Function function);

/// Records one event, in printf syntax. Any thread may.
KV_RECORDER_API void record(const char* format, ...);
KV_RECORDER_API std::size_t recorded();
KV_RECORDER_API const char* event_at(std::size_t index);

KV_RECORDER_API void record_transform(const TransformCall& call);
KV_RECORDER_API TransformCall last_transform();

/// Forgets all events and lets every function succeed.
KV_RECORDER_API void reset_recorder();

}  // namespace kv::test

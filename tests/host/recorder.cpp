#include "recorder.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <new>
#include <stdexcept>

namespace kv::test {
namespace {

std::mutex mutex;
std::array<std::array<char, 400>, 4000> events;
std::size_t event_count = 0;
TransformCall transform_call;
std::array<Behaviour, static_cast<std::size_t>(Function::count)> behaviours{};

}  // namespace

void set_behaviour(Function function, Behaviour behaviour) {
  behaviours[static_cast<std::size_t>(function)] = behaviour;
}

bool succeeds(Function function) {
  const Behaviour behaviour = behaviours[static_cast<std::size_t>(function)];
  if (behaviour == Behaviour::throw_bad_alloc) throw std::bad_alloc();
  if (behaviour == Behaviour::throw_other) throw std::runtime_error("thrown by a fake");
  return behaviour == Behaviour::succeed;
}

void record(const char* format, ...) {
  const std::lock_guard lock(mutex);
  std::va_list arguments;
  va_start(arguments, format);
  auto& event = events.at(event_count++);
  std::vsnprintf(event.data(), event.size(), format, arguments);
  va_end(arguments);
}

std::size_t recorded() {
  const std::lock_guard lock(mutex);
  return event_count;
}

const char* event_at(std::size_t index) { return events.at(index).data(); }

void record_transform(const TransformCall& call) {
  const std::lock_guard lock(mutex);
  transform_call = call;
}

TransformCall last_transform() {
  const std::lock_guard lock(mutex);
  return transform_call;
}

void reset_recorder() {
  const std::lock_guard lock(mutex);
  event_count = 0;
  transform_call = {};
  behaviours.fill(Behaviour::succeed);
}

}  // namespace kv::test

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Clocks that go back: loaded by LD_PRELOAD, it has all that tell the time go back by an hour at
// every 16th reading, the monotonic ones too. Waiting for a length of time is not affected.
#include <dlfcn.h>
#include <sys/time.h>
#include <time.h>

#include <atomic>

namespace {

constexpr long kReadings = 16;
constexpr time_t kStep = 3600;

std::atomic<long> readings = 0;

time_t lost() { return readings++ / kReadings * kStep; }

}  // namespace

extern "C" {

__attribute__((visibility("default"))) int clock_gettime(clockid_t clock, timespec* now) noexcept {
  static const auto real =
      reinterpret_cast<decltype(&clock_gettime)>(dlsym(RTLD_NEXT, "clock_gettime"));
  const int result = real(clock, now);
  // Time of a processor is no clock that anybody sets.
  const bool of_processor = clock == CLOCK_PROCESS_CPUTIME_ID || clock == CLOCK_THREAD_CPUTIME_ID;
  if (result == 0 && !of_processor) now->tv_sec -= lost();
  return result;
}

__attribute__((visibility("default"))) int gettimeofday(timeval* now, void*) noexcept {
  timespec time{};
  const int result = clock_gettime(CLOCK_REALTIME, &time);
  *now = {time.tv_sec, time.tv_nsec / 1000};
  return result;
}

__attribute__((visibility("default"))) time_t time(time_t* now) noexcept {
  timespec time{};
  clock_gettime(CLOCK_REALTIME, &time);
  if (now != nullptr) *now = time.tv_sec;
  return time.tv_sec;
}
}

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Millions of transforms of mixed sizes and planes on two threads and one handle: does memory stay,
// and does a call late in the run give the bytes of the first one?
//
//   endurance_transforms COUNT
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <random>
#include <string_view>
#include <thread>
#include <vector>

#include "kevrinth_qrm_polarization_processor.h"
#include "process_figures.h"

namespace {

constexpr int kThreads = 2;
constexpr int kRounds = 100;
constexpr std::size_t kCalls = 509;  ///< different ones; prime, so that samples meet all of them
constexpr std::size_t kEveryChecked = 50;
constexpr int kMostPixels = 320 * 240;

struct Call {
  int width, height;
  PolarPhase phase;
  int x_origin, y_origin;
  std::uint32_t bit_depth;
  std::uint16_t output_max;
  std::uint32_t planes;  ///< a bit for each
};

std::vector<Call> make_calls() {
  std::mt19937 random(1);
  const auto draw = [&](int from, int to) {
    return std::uniform_int_distribution(from, to)(random);
  };
  std::vector<Call> calls(kCalls);
  for (Call& call : calls) {
    call = {draw(2, 48),
            draw(2, 32),
            draw(0, 3),
            draw(0, 3),
            draw(0, 3),
            static_cast<std::uint32_t>(draw(1, 16)),
            static_cast<std::uint16_t>(draw(1, 65535)),
            static_cast<std::uint32_t>(draw(1, 63))};
    if (call.width < 4) call.height = 2;
  }
  // A few that leave the caches.
  for (std::size_t i = 0; i < 4; ++i) {
    calls[i * kCalls / 4].width = 320;
    calls[i * kCalls / 4].height = 240 - static_cast<int>(i);
  }
  return calls;
}

class Caller {
 public:
  Caller(PolarizationProcessor* handle, const std::vector<Call>& calls,
         const std::vector<std::uint16_t>& samples)
      : handle_(handle),
        calls_(calls),
        samples_(samples),
        floats_(2 * kMostPixels),
        first_(kCalls) {
    for (auto& plane : levels_) plane.resize(kMostPixels);
    for (std::size_t i = 0; i < kCalls; ++i) first_[i] = sum_of(i);
  }

  void run(std::size_t count) {
    for (; count > 0; --count, ++number_) {
      const std::size_t call = number_ % kCalls;
      if (number_ % kEveryChecked != 0) {
        transform(call);
      } else {
        different_ += sum_of(call) != first_[call];
        ++checked_;
      }
    }
  }

  std::size_t checked() const { return checked_; }
  std::size_t different() const { return different_; }

 private:
  void transform(std::size_t number) {
    const Call& call = calls_[number];
    const auto level = [&](std::uint32_t plane) {
      return (call.planes >> plane & 1) != 0 ? levels_[plane - 1].data() : nullptr;
    };
    const ProcessorStatus status = kv_polarization_processor_transform(
        handle_, call.phase, samples_.data() + number, call.x_origin, call.y_origin, call.width,
        call.height, call.bit_depth, call.output_max,
        (call.planes & 1) != 0 ? floats_.data() : nullptr, level(1), level(2), level(3), level(4),
        level(5));
    if (status != kv_status_ok) std::abort();
  }

  /// FNV-1a over all memory that the call may have written to, which is cleared before.
  std::uint64_t sum_of(std::size_t number) {
    const auto pixels = static_cast<std::size_t>(calls_[number].width) *
                        static_cast<std::size_t>(calls_[number].height);
    std::fill_n(floats_.begin(), 2 * pixels, 0.0F);
    for (auto& plane : levels_) std::fill_n(plane.begin(), pixels, std::uint16_t{0});
    transform(number);
    std::uint64_t sum = 14695981039346656037U;
    const auto add = [&sum](const void* data, std::size_t bytes) {
      for (std::size_t i = 0; i < bytes; ++i) {
        sum = (sum ^ static_cast<const unsigned char*>(data)[i]) * 1099511628211U;
      }
    };
    add(floats_.data(), 2 * pixels * sizeof(float));
    for (const auto& plane : levels_) add(plane.data(), pixels * sizeof(std::uint16_t));
    return sum;
  }

  PolarizationProcessor* handle_;
  const std::vector<Call>& calls_;
  const std::vector<std::uint16_t>& samples_;
  std::vector<float> floats_;
  std::array<std::vector<std::uint16_t>, 5> levels_;
  std::vector<std::uint64_t> first_;
  std::size_t number_ = 0;
  std::size_t checked_ = 0;
  std::size_t different_ = 0;
};

}  // namespace

int main(int count, char** arguments) {
  const std::size_t wanted = count == 2 ? std::strtoul(arguments[1], nullptr, 10) : 0;
  const std::size_t of_round = wanted / kThreads / kRounds;
  PolarizationProcessor* handle = nullptr;
  if (of_round == 0 || kv_polarization_processor_module_initialize() != kv_status_ok ||
      kv_polarization_processor_create_polarization_processor(&handle) != kv_status_ok) {
    return EXIT_FAILURE;
  }
  std::mt19937 random(2);
  std::vector<std::uint16_t> samples(kMostPixels + kCalls);
  for (std::uint16_t& sample : samples) sample = static_cast<std::uint16_t>(random());
  const std::vector<Call> calls = make_calls();
  std::vector<Caller> callers(kThreads, Caller(handle, calls, samples));

  const auto run_round = [&] {
    std::array<std::thread, kThreads> threads;
    for (std::size_t i = 0; i < kThreads; ++i) {
      threads[i] = std::thread([&caller = callers[i], of_round] { caller.run(of_round); });
    }
    for (std::thread& thread : threads) thread.join();
  };
  kv::endurance::Samples memory;
  memory.take();  // what sampling itself keeps
  run_round();
  memory = {};
  for (int round = 1; round < kRounds; ++round) {
    memory.take();
    run_round();
  }
  memory.take();

  std::size_t checked = 0;
  std::size_t different = 0;
  for (const Caller& caller : callers) {
    checked += caller.checked();
    different += caller.different();
  }
  std::cout << kThreads * kRounds * of_round << " transforms of " << kCalls << " kinds on "
            << kThreads << " threads, " << checked << " compared, " << different << " different; ";
  memory.print();
  std::cout << std::endl;
  kv_polarization_processor_destroy_polarization_processor(handle);
  kv_polarization_processor_module_terminate();
  return different == 0 && memory.constant(256) ? EXIT_SUCCESS : EXIT_FAILURE;
}

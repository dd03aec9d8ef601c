// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// The library's C functions with any arguments, against a model of their statuses; frames and
// planes between fences, and the planes against those of other calls.
#include "fuzzing/fenced_memory.h"
#include "kevrinth_qrm_polarization_processor.h"

namespace kv::fuzzing {
namespace {

constexpr int kGreatestWidth = 140;
constexpr int kGreatestHeight = 13;
constexpr std::size_t kMostPixels = std::size_t{kGreatestWidth} * kGreatestHeight;
constexpr std::size_t kMostGap = 64;

/// normalized_stokes and the five planes of 16 bits, in the order of the arguments.
constexpr std::size_t kPlanes = 6;
constexpr std::size_t pixel_bytes(std::size_t plane) { return plane == 0 ? 8 : 2; }

struct Arguments {
  PolarizationProcessor* handle = nullptr;
  PolarPhase polar_phase = 0;
  const std::uint16_t* input = nullptr;
  std::int32_t x_origin = 0;
  std::int32_t y_origin = 0;
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::uint32_t bit_depth = 0;
  std::uint16_t output_max = 0;
  std::array<void*, kPlanes> planes{};

  std::size_t pixels() const {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  }
  ProcessorStatus transform() const {
    const auto level = [&](std::size_t plane) {
      return static_cast<std::uint16_t*>(planes[plane]);
    };
    return kv_polarization_processor_transform(
        handle, polar_phase, input, x_origin, y_origin, width, height, bit_depth, output_max,
        static_cast<float*>(planes[0]), level(1), level(2), level(3), level(4), level(5));
  }
};

/// The header's list, in its order.
ProcessorStatus expected_status(const Arguments& call) {
  if (call.handle == nullptr) return kv_status_null_handle;
  if (call.polar_phase >= 4) return kv_status_invalid_polar_phase;
  if (call.input == nullptr) return kv_status_null_input;
  std::array<bool, kPlanes> wanted{};
  for (std::size_t i = 0; i < kPlanes; ++i) wanted[i] = call.planes[i] != nullptr;
  if (std::ranges::none_of(wanted, [](bool is) { return is; })) return kv_status_no_outputs;
  for (const void* plane : call.planes) {
    if (plane == call.input) return kv_status_input_aliases_output;
  }
  for (std::size_t i = 0; i < kPlanes; ++i) {
    for (std::size_t k = 0; k < i; ++k) {
      if (wanted[i] && call.planes[i] == call.planes[k]) return kv_status_outputs_alias;
    }
  }
  if (call.width < 2) return kv_status_invalid_width;
  if (call.height < 2) return kv_status_invalid_height;
  if (call.output_max == 0) return kv_status_zero_output_max;
  if (call.bit_depth > 16) return kv_status_invalid_bit_depth;
  return kv_status_ok;
}

PolarizationProcessor* processor = nullptr;

FencedMemory& input_memory() {
  static FencedMemory memory(kMostPixels * 2 + kMostGap);
  return memory;
}
/// Of the first call, or of those that it is compared with.
FencedMemory& plane_memory(std::size_t plane, bool second = false) {
  constexpr auto pair_bytes = kMostPixels * pixel_bytes(0) + kMostGap;
  constexpr auto level_bytes = kMostPixels * pixel_bytes(1) + kMostGap;
  static std::array<std::array<FencedMemory, 2>, kPlanes> memories = [] {
    using Two = std::array<FencedMemory, 2>;
    const auto two = [](std::size_t bytes) {
      return Two{FencedMemory(bytes), FencedMemory(bytes)};
    };
    return std::array<Two, kPlanes>{two(pair_bytes),  two(level_bytes), two(level_bytes),
                                    two(level_bytes), two(level_bytes), two(level_bytes)};
  }();
  return memories[plane][second ? 1 : 0];
}

/// A sound call, but for what choose_faults changes.
Arguments choose_call(Choices& choices) {
  Arguments call;
  call.handle = processor;
  call.polar_phase = static_cast<PolarPhase>(choices.below(8)) - 4;
  if (call.polar_phase < 0) call.polar_phase += 4 * choices.once_in(2);
  call.x_origin = choices.number<std::int32_t>();
  call.y_origin = choices.number<std::int32_t>();
  call.width = 2 + static_cast<std::int32_t>(choices.below(kGreatestWidth - 1));
  call.height = 2 + static_cast<std::int32_t>(choices.below(kGreatestHeight - 1));
  if (call.width < 4) call.height = 2;
  call.bit_depth = static_cast<std::uint32_t>(choices.below(17));
  call.output_max = std::max<std::uint16_t>(choices.number<std::uint16_t>(), 1);
  return call;
}

void place_planes(Arguments& call, Choices& choices, std::size_t wanted) {
  const bool at_end = choices.once_in(2);
  for (std::size_t i = 0; i < kPlanes; ++i) {
    // Kept at the element's alignment, as the header asks for it.
    const std::size_t gap = choices.below(kMostGap / 4) * 4;
    const auto place = plane_memory(i).place(call.pixels() * pixel_bytes(i), at_end, gap);
    if ((wanted >> i & 1) != 0) call.planes[i] = place.data();
  }
}

void place_input(Arguments& call, Choices& choices) {
  const bool at_end = choices.once_in(2);
  const auto place =
      input_memory().place(call.pixels() * 2, at_end, choices.below(kMostGap / 2) * 2);
  // All samples are of the input's bytes, over and over; their high bits go beyond the bit depth.
  const auto bytes = choices.rest();
  for (std::size_t i = 0; i < place.size(); ++i) {
    place[i] = bytes.empty() ? static_cast<std::uint8_t>(37 * i) : bytes[i % bytes.size()];
  }
  call.input = reinterpret_cast<const std::uint16_t*>(place.data());
}

/// Planes exchanged, one of them the input, and impossible values.
void choose_faults(Arguments& call, Choices& choices) {
  for (int faults = static_cast<int>(choices.below(3)); faults >= 0; --faults) {
    void*& plane = call.planes[choices.below(kPlanes)];
    switch (choices.below(10)) {
      case 0:
        call.handle = nullptr;
        break;
      case 1:
        call.polar_phase = choices.number<std::int32_t>();
        break;
      case 2:
        call.input = nullptr;
        break;
      case 3:
        call.planes = {};
        break;
      case 4:
        plane = const_cast<std::uint16_t*>(call.input);
        break;
      case 5:
        plane = call.planes[choices.below(kPlanes)];
        break;
      case 6:
        call.width = std::min(choices.number<std::int32_t>(), 1);
        break;
      case 7:
        call.height = std::min(choices.number<std::int32_t>(), 1);
        break;
      case 8:
        call.output_max = 0;
        break;
      default:
        call.bit_depth = choices.number<std::uint32_t>();
    }
  }
}

std::span<const std::uint8_t> bytes_of(const void* plane, std::size_t bytes) {
  return {static_cast<const std::uint8_t*>(plane), bytes};
}

/// Each plane asked for alone is the plane asked for among others.
void compare_with_single_planes(const Arguments& call) {
  for (std::size_t i = 0; i < kPlanes; ++i) {
    if (call.planes[i] == nullptr) continue;
    const std::size_t bytes = call.pixels() * pixel_bytes(i);
    Arguments alone = call;
    alone.planes = {};
    alone.planes[i] = plane_memory(i, true).place(bytes, false, 0).data();
    require(alone.transform() == kv_status_ok, "a plane alone is transformed");
    require(plane_memory(i, true).surroundings_untouched(), "a plane alone stays in its place");
    require(std::ranges::equal(bytes_of(alone.planes[i], bytes), bytes_of(call.planes[i], bytes)),
            "a plane alone is the same");
  }
}

/// The upper rows of a frame do not know the lower ones: all but the last three rows of a frame
/// that ends earlier, by an even number of rows, are the same in the 16-bit planes.
void compare_with_upper_part(const Arguments& call) {
  Arguments upper = call;
  upper.height = (call.height / 4) * 2 + call.height % 2;
  if (upper.height < 4) return;
  upper.planes = {};
  const auto rows = static_cast<std::size_t>(upper.height - 3);
  const std::size_t bytes = rows * static_cast<std::size_t>(call.width) * 2;
  for (std::size_t i = 1; i < kPlanes; ++i) {
    if (call.planes[i] == nullptr) continue;
    upper.planes[i] = plane_memory(i, true).place(upper.pixels() * 2, true, 0).data();
  }
  if (upper.transform() == kv_status_no_outputs) return;
  for (std::size_t i = 1; i < kPlanes; ++i) {
    if (upper.planes[i] == nullptr) continue;
    require(std::ranges::equal(bytes_of(upper.planes[i], bytes), bytes_of(call.planes[i], bytes)),
            "the upper part of a frame is the same");
  }
}

/// Weights of any bits come back as they were set.
void try_weights(Choices& choices) {
  using Weights = std::array<std::uint8_t, 64>;
  std::array<Weights, 4> set;
  std::array<Weights, 4> got;
  for (Weights& weights : set) {
    for (std::uint8_t& byte : weights) byte = choices.byte();
  }
  const auto pointers = [](auto& all) {
    return std::array{
        reinterpret_cast<float*>(all[0].data()), reinterpret_cast<float*>(all[1].data()),
        reinterpret_cast<float*>(all[2].data()), reinterpret_cast<float*>(all[3].data())};
  };
  const auto to = pointers(set);
  const auto from = pointers(got);
  require(kv_polarization_processor_set_custom_calibration_coefficients(
              processor, to[0], to[1], to[2], to[3]) == kv_status_ok &&
              kv_polarization_processor_get_custom_calibration_coefficients(
                  processor, from[0], from[1], from[2], from[3]) == kv_status_ok,
          "weights are taken");
  require(set == got, "weights come back");
}

/// A processor of its own, for an input that changes weights or finds no memory.
void make_processor() {
  processor = nullptr;
  ProcessorStatus status = kv_status_ok;
  {
    const FailingAllocations failing;
    status = kv_polarization_processor_create_polarization_processor(&processor);
  }
  require(status == kv_status_ok || (status == kv_status_out_of_memory && allocations_can_fail()),
          "a processor is made");
  require((processor != nullptr) == (status == kv_status_ok), "a handle is written on success");
}

void end_processor() {
  require(kv_polarization_processor_destroy_polarization_processor(processor) ==
              (processor == nullptr ? kv_status_null_handle : kv_status_ok),
          "a processor is ended");
}

void without_module(const Arguments& call) {
  kv_polarization_processor_module_terminate();
  require(call.transform() == kv_status_not_initialized, "the module is closed");
  require(kv_polarization_processor_destroy_polarization_processor(nullptr) ==
              kv_status_not_initialized,
          "the module is closed for handles");
  kv_polarization_processor_module_initialize();
}

}  // namespace

void set_up() { kv_polarization_processor_module_initialize(); }

void fuzz(Choices choices) {
  const std::size_t wanted = choices.below(64);
  const std::uint8_t ways = choices.byte();
  const bool sound = (ways & 1) == 0;
  static PolarizationProcessor* const kept = [] {
    kv_polarization_processor_create_polarization_processor(&processor);
    return processor;
  }();
  processor = kept;
  const bool own = (ways & 2) != 0;
  if (own) make_processor();
  if (own && processor != nullptr && (ways & 4) != 0) try_weights(choices);

  Arguments call = choose_call(choices);
  place_planes(call, choices, wanted);
  if (sound) {
    place_input(call, choices);
  } else {
    Choices faults(choices.take(24));
    place_input(call, choices);
    choose_faults(call, faults);
    // Several faults can make up a call without one, in which planes may have too little room.
    if (expected_status(call) == kv_status_ok) call.input = nullptr;
  }

  const ProcessorStatus status = call.transform();
  require(status == expected_status(call), "the status is that of the first fault");
  for (std::size_t i = 0; i < kPlanes; ++i) {
    const FencedMemory& memory = plane_memory(i);
    const bool written = status == kv_status_ok && call.planes[i] != nullptr;
    require(written ? memory.surroundings_untouched() : memory.untouched(),
            "no byte beside the planes is written");
  }
  if (status == kv_status_ok) {
    compare_with_single_planes(call);
    compare_with_upper_part(call);
  }
  if ((ways & 0xF8) == 0xF8) without_module(call);
  if (own) end_processor();
}

}  // namespace kv::fuzzing

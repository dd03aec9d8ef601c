// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Handles made and destroyed in a module that is opened and closed, nested too: does the process
// keep anything of it?
//
//   endurance_lifecycle COUNT
#include <array>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <stdexcept>

#include "kevrinth_qrm_polarization_processor.h"
#include "process_figures.h"

namespace {

void expect_ok(ProcessorStatus status) {
  if (status != kv_status_ok) throw std::runtime_error("status " + std::to_string(status));
}

/// A handle that outlives a module's end works again after the next beginning.
void live(std::size_t number) {
  const std::size_t nested = 1 + number % 3;
  for (std::size_t i = 0; i < nested; ++i) expect_ok(kv_polarization_processor_module_initialize());
  std::array<PolarizationProcessor*, 3> handles{};
  for (auto& handle : handles) {
    expect_ok(kv_polarization_processor_create_polarization_processor(&handle));
  }
  if (number % 5 == 0) {
    for (std::size_t i = 0; i < nested; ++i)
      expect_ok(kv_polarization_processor_module_terminate());
    for (std::size_t i = 0; i < nested; ++i)
      expect_ok(kv_polarization_processor_module_initialize());
  }
  constexpr std::array<std::uint16_t, 8> frame{1000, 600, 600, 200, 1000, 600, 600, 200};
  std::array<std::uint16_t, 8> intensity{};
  for (auto* handle : handles) {
    expect_ok(kv_polarization_processor_transform(handle, kv_polar_phase_0, frame.data(), 0, 0, 4,
                                                  2, 12, 4095, nullptr, intensity.data(), nullptr,
                                                  nullptr, nullptr, nullptr));
    expect_ok(kv_polarization_processor_destroy_polarization_processor(handle));
  }
  for (std::size_t i = 0; i < nested; ++i) expect_ok(kv_polarization_processor_module_terminate());
}

}  // namespace

int main(int count, char** arguments) try {
  const std::size_t lives = count == 2 ? std::strtoul(arguments[1], nullptr, 10) : 0;
  if (lives < 100) return EXIT_FAILURE;
  kv::endurance::Samples figures;
  figures.take();
  for (std::size_t i = 0; i < lives / 100; ++i) live(i);
  figures = {};
  for (std::size_t i = 0; i < lives; ++i) {
    if (i % (lives / 100) == 0) figures.take();
    live(i);
  }
  figures.take();
  std::cout << lives << " lives of a module with 3 handles each; ";
  figures.print();
  std::cout << std::endl;
  return figures.constant(256) ? EXIT_SUCCESS : EXIT_FAILURE;
} catch (const std::exception& error) {
  std::cout << error.what() << std::endl;
  return EXIT_FAILURE;
}

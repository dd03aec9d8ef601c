// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// The library loaded, used and unloaded over and over, with the companions that it loads itself.
//
//   endurance_loading LIBRARY COUNT
#include <dlfcn.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <string>

#include "kevrinth_qrm_polarization_processor.h"
#include "process_figures.h"

namespace {

using kv::endurance::mapped_files;

bool mapped(const std::string& part) {
  for (const std::string& file : mapped_files()) {
    if (file.find(part) != std::string::npos) return true;
  }
  return false;
}

void expect(bool good, const char* what) {
  if (!good) throw std::runtime_error(what);
}

class Library {
 public:
  explicit Library(const char* path) : library_(dlopen(path, RTLD_NOW | RTLD_LOCAL)) {
    expect(library_ != nullptr, "the library cannot be loaded");
  }
  ~Library() { dlclose(library_); }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  template <class Function, class... Arguments>
  void call(const char* name, Arguments... arguments) const {
    auto* const function = reinterpret_cast<Function*>(dlsym(library_, name));
    expect(function != nullptr && function(arguments...) == kv_status_ok, name);
  }

 private:
  void* library_;
};

/// Every second time the module is left open: unloading ends it.
void load_and_use(const char* path, std::size_t number) {
  const Library library(path);
  library.call<decltype(kv_polarization_processor_module_initialize)>(
      "kv_polarization_processor_module_initialize");
  PolarizationProcessor* handle = nullptr;
  library.call<decltype(kv_polarization_processor_create_polarization_processor)>(
      "kv_polarization_processor_create_polarization_processor", &handle);
  expect(mapped("kevrinth_qrm_logger"), "the logger was not loaded");
  expect(mapped("_vector_avx"), "no vector module was loaded");
  constexpr std::array<std::uint16_t, 4> frame{1000, 600, 600, 200};
  std::array<std::uint16_t, 4> dolp{};
  std::uint16_t* none = nullptr;
  float* no_floats = nullptr;
  library.call<decltype(kv_polarization_processor_transform)>(
      "kv_polarization_processor_transform", handle, kv_polar_phase_0, frame.data(), 0, 0, 2, 2,
      12U, std::uint16_t{65535}, no_floats, none, none, none, none, dolp.data());
  library.call<decltype(kv_polarization_processor_destroy_polarization_processor)>(
      "kv_polarization_processor_destroy_polarization_processor", handle);
  if (number % 2 == 0)
    library.call<decltype(kv_polarization_processor_module_terminate)>(
        "kv_polarization_processor_module_terminate");
}

}  // namespace

int main(int count, char** arguments) try {
  expect(count == 3, "LIBRARY COUNT");
  const std::size_t loads = std::strtoul(arguments[2], nullptr, 10);
  kv::endurance::Samples figures;
  figures.take();
  for (std::size_t i = 0; i < loads / 2; ++i) load_and_use(arguments[1], i);
  const auto before = mapped_files();
  figures = {};
  for (std::size_t i = 0; i < loads; ++i) {
    figures.take();
    load_and_use(arguments[1], i);
    expect(mapped_files() == before, "other files are mapped than before");
  }
  figures.take();
  expect(!mapped("kevrinth_qrm"), "a library of ours stayed");
  std::cout << loads << " loads with logger and vector module; " << before.size()
            << " mappings of files before and after; ";
  figures.print();
  std::cout << std::endl;
  return figures.constant(256) ? EXIT_SUCCESS : EXIT_FAILURE;
} catch (const std::exception& error) {
  std::cout << error.what() << std::endl;
  return EXIT_FAILURE;
}

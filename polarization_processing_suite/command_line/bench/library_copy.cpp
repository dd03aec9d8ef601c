// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/bench/library_copy.h"

#include <random>
#include <system_error>

#include "toolkit/machine/machine.h"

namespace kv::polarization {
namespace {

std::uint16_t* memory_of(const PlaneViews& planes, Plane plane) {
  const auto levels = planes.level(plane).levels;
  return levels.empty() ? nullptr : levels.data();
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
  std::error_code failure;
  const auto place = std::filesystem::temp_directory_path(failure);
  const auto path = place / ("kv-polarize-" + std::to_string(std::random_device{}()));
  if (!failure && std::filesystem::create_directory(path, failure)) path_ = path;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
}

LibraryCopy::LibraryCopy() {
  open();
  if (obstacle_.empty() && handle_ == nullptr) {
    obstacle_ = "a copy of the library could not be loaded from a temporary folder";
  }
  for (const CpuTier tier : {CpuTier::avx2, CpuTier::avx512}) {
    if (platform::is_loaded(module_file_name(tier).c_str())) {
      obstacle_ =
          "a copy of the library in a folder of its own finds the vector modules all the "
          "same, beside the program or by the loader's search path";
    }
  }
}

void LibraryCopy::open() {
  std::error_code failure;
  const std::filesystem::path source = core_library();
  const std::filesystem::path copy = folder_.path() / source.filename();
  if (folder_.path().empty() || !std::filesystem::copy_file(source, copy, failure)) return;
  library_ = platform::load_library(copy.string().c_str());
  if (library_ == nullptr) return;
  const auto initialize =
      platform::find_function<decltype(&kv_polarization_processor_module_initialize)>(
          library_, "kv_polarization_processor_module_initialize");
  const auto create =
      platform::find_function<decltype(&kv_polarization_processor_create_polarization_processor)>(
          library_, "kv_polarization_processor_create_polarization_processor");
  transform_ = platform::find_function<decltype(transform_)>(library_,
                                                             "kv_polarization_processor_transform");
  if (initialize == nullptr || create == nullptr || transform_ == nullptr) return;
  initialize();
  if (create(&handle_) != kv_status_ok) handle_ = nullptr;
}

LibraryCopy::~LibraryCopy() {
  if (library_ == nullptr) return;
  const auto destroy =
      platform::find_function<decltype(&kv_polarization_processor_destroy_polarization_processor)>(
          library_, "kv_polarization_processor_destroy_polarization_processor");
  const auto terminate =
      platform::find_function<decltype(&kv_polarization_processor_module_terminate)>(
          library_, "kv_polarization_processor_module_terminate");
  if (handle_ != nullptr && destroy != nullptr) destroy(handle_);
  if (terminate != nullptr) terminate();
  // Before the folder goes: Windows keeps files of loaded libraries.
  platform::unload_library(library_);
}

void LibraryCopy::transform(const Frame& frame, const PlaneViews& planes) const {
  transform_(handle_, kv_polar_phase_0, frame.samples.data(), 0, 0, frame.width, frame.height,
             static_cast<std::uint32_t>(frame.bit_depth), planes.intensity.output_max,
             planes.normalized_stokes.empty() ? nullptr : planes.normalized_stokes.data(),
             memory_of(planes, Plane::intensity), memory_of(planes, Plane::stokes_s1),
             memory_of(planes, Plane::stokes_s2), memory_of(planes, Plane::azimuth),
             memory_of(planes, Plane::dolp));
}

}  // namespace kv::polarization

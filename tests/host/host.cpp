#include "host.h"

#include <array>
#include <random>
#include <string_view>

namespace kv::test {

namespace fs = std::filesystem;

namespace {

/// The folders of the fakes and the companions that they stand for.
struct Fake {
  const char* folder;
  const char* file_stem;
  std::string Companions::*variant;
};

constexpr std::array<Fake, 3> kFakes{{
    {"logger", "kevrinth_qrm_logger", &Companions::logger},
    {"avx512", "kevrinth_qrm_polarization_processor_vector_avx512", &Companions::avx512},
    {"avx2", "kevrinth_qrm_polarization_processor_vector_avx2", &Companions::avx2},
}};

fs::path file_name(const Fake& fake) { return std::string(fake.file_stem) + kLibrarySuffix; }

/// The event with N for a duration of any digits, six of them behind the point.
std::string without_duration(std::string event) {
  constexpr std::string_view kBefore = " takes ";
  const auto before = event.find(kBefore);
  const auto end = event.find(" microseconds.");
  if (before == std::string::npos || end == std::string::npos) return event;
  const auto begin = before + kBefore.size();
  const std::string number = event.substr(begin, end - begin);
  const auto point = number.find('.');
  const bool well_formed = number.find_first_not_of("0123456789.") == std::string::npos &&
                           point != 0 && point != std::string::npos && number.size() - point == 7;
  return well_formed ? event.replace(begin, number.size(), "N") : event;
}

}  // namespace

Host::Host(const Companions& companions)
    : working_folder_(fs::current_path()),
      folder_(fs::temp_directory_path() / ("host_test_" + std::to_string(std::random_device{}()))) {
  reset_recorder();
  fs::create_directory(folder_);
  const fs::path library = folder_ / fs::path(PROCESSOR_LIBRARY).filename();
  fs::copy_file(PROCESSOR_LIBRARY, library);
  for (const Fake& fake : kFakes) {
    const std::string& variant = companions.*fake.variant;
    if (variant.empty()) continue;
    const fs::path source = fs::path(FAKES_FOLDER) / fake.folder / variant / file_name(fake);
    fs::copy_file(source, folder_ / file_name(fake));
  }
  fs::current_path(folder_);
  library_.emplace(library);
  library_->find("kv_polarization_processor_module_initialize", initialize_);
  library_->find("kv_polarization_processor_module_terminate", terminate_);
  library_->find("kv_polarization_processor_create_polarization_processor", create_);
  library_->find("kv_polarization_processor_destroy_polarization_processor", destroy_);
  library_->find("kv_polarization_processor_get_custom_calibration_coefficients", get_);
  library_->find("kv_polarization_processor_set_custom_calibration_coefficients", set_);
  library_->find("kv_polarization_processor_transform", transform_);
}

Host::~Host() {
  unload();
  for (const Fake& fake : kFakes) drop_library(folder_ / file_name(fake));
  fs::current_path(working_folder_);
  fs::remove_all(folder_);
}

ProcessorStatus Host::get(PolarizationProcessor* handle) const {
  return get_(handle, nullptr, nullptr, nullptr, nullptr);
}

ProcessorStatus Host::set(PolarizationProcessor* handle) const {
  return set_(handle, nullptr, nullptr, nullptr, nullptr);
}

ProcessorStatus Host::transform(PolarizationProcessor* handle, const Arguments& a) const {
  return transform_(handle, a.polar_phase, a.input, a.x_origin, a.y_origin, a.width, a.height,
                    a.bit_depth, a.output_max, a.normalized_stokes, a.intensity, a.stokes_s1,
                    a.stokes_s2, a.azimuth, a.dolp);
}

Events events() {
  Events all;
  for (std::size_t i = 0; i < recorded(); ++i) all.push_back(without_duration(event_at(i)));
  return all;
}

Events operator+(Events first, const Events& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

Events error_line(const std::string& export_name, const std::string& message) {
  return {"qrm_log 2 kevrinth_qrm_polarization_processor.cpp kv_polarization_processor_" +
          export_name + " | " + message};
}

Events null_handle_to_transform() {
  return error_line("transform", "ERROR:  The specified polarization processor handle is NULL!") +
         kTimingLine;
}

}  // namespace kv::test

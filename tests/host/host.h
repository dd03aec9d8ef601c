#pragma once

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "kevrinth_qrm_polarization_processor.h"
#include "recorder.h"
#include "shared_library.h"

namespace kv::test {

/// The fakes beside the library: the variant of each, empty for none. "complete" has all exports;
/// the other variants bear the name of the export that they lack, without what all share.
struct Companions {
  std::string logger;
  std::string avx512;
  std::string avx2;
};

const Companions kAllCompanions{"complete", "complete", "complete"};

/// The samples of the frame that Arguments names, and the intensity that the library's own kernels
/// make of them.
constexpr std::uint16_t kSample = 1000;
constexpr std::uint16_t kIntensity = 2000;
constexpr std::uint16_t kUntouched = 0xABCD;

/// The arguments of a transform but the handle: by default a frame of 2 by 2 pixels.
struct Arguments {
  PolarPhase polar_phase = kv_polar_phase_0;
  const std::uint16_t* input;
  std::int32_t x_origin = 0;
  std::int32_t y_origin = 0;
  std::int32_t width = 2;
  std::int32_t height = 2;
  std::uint32_t bit_depth = 12;
  std::uint16_t output_max = 4095;
  float* normalized_stokes = nullptr;
  std::uint16_t* intensity;
  std::uint16_t* stokes_s1 = nullptr;
  std::uint16_t* stokes_s2 = nullptr;
  std::uint16_t* azimuth = nullptr;
  std::uint16_t* dolp = nullptr;
};

/// A frame of 2 by 2 pixels and its intensity.
struct Frame {
  std::uint16_t samples[4] = {kSample, kSample, kSample, kSample};
  std::uint16_t intensity[4] = {kUntouched, kUntouched, kUntouched, kUntouched};

  Arguments arguments() { return {.input = samples, .intensity = intensity}; }
};

/// A host process's view of the library: a copy in a folder of its own with the companions, loaded
/// from there. The folder is also the working folder. The recorder starts anew with it, and nothing
/// stays loaded after it.
class Host {
 public:
  explicit Host(const Companions& companions = {});
  ~Host();
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  ProcessorStatus initialize() const { return initialize_(); }
  ProcessorStatus terminate() const { return terminate_(); }
  ProcessorStatus create(PolarizationProcessor*& handle) const { return create_(&handle); }
  ProcessorStatus destroy(PolarizationProcessor* handle) const { return destroy_(handle); }
  ProcessorStatus get(PolarizationProcessor* handle) const;
  ProcessorStatus set(PolarizationProcessor* handle) const;
  ProcessorStatus transform(PolarizationProcessor* handle, const Arguments& arguments) const;

  /// Unloads the library; no other call may follow.
  void unload() { library_.reset(); }

 private:
  std::filesystem::path working_folder_;
  std::filesystem::path folder_;
  std::optional<SharedLibrary> library_;
  decltype(&kv_polarization_processor_module_initialize) initialize_ = nullptr;
  decltype(&kv_polarization_processor_module_terminate) terminate_ = nullptr;
  decltype(&kv_polarization_processor_create_polarization_processor) create_ = nullptr;
  decltype(&kv_polarization_processor_destroy_polarization_processor) destroy_ = nullptr;
  decltype(&kv_polarization_processor_get_custom_calibration_coefficients) get_ = nullptr;
  decltype(&kv_polarization_processor_set_custom_calibration_coefficients) set_ = nullptr;
  decltype(&kv_polarization_processor_transform) transform_ = nullptr;
};

using Events = std::vector<std::string>;

/// What the companions have recorded, with N for durations.
Events events();

Events operator+(Events first, const Events& second);

/// The lines of a life with the complete logger. Inline, so that tables of other files may be made
/// of them before main.
inline const Events kLoggerComes{
    "load logger",
    "qrm_get_log 'KEVRINTH_QRM_POLARIZATION_PROCESSOR' '' 'kevrinth_qrm_logger.cfg'"};
inline const Events kLoggerGoes{"qrm_free_log 'KEVRINTH_QRM_POLARIZATION_PROCESSOR' ''",
                                "unload logger"};

/// The whole path, as far as it is the same on every machine.
inline const Events kTimingLine{
    "qrm_log 7 polarization_processing_suite\\polarization_processor\\"
    "kevrinth_qrm_polarization_processor.cpp kv_polarization_processor_transform | "
    "transform takes N microseconds."};

Events error_line(const std::string& export_name, const std::string& message);

/// What a transform with a null handle logs.
Events null_handle_to_transform();

}  // namespace kv::test

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/simulate/simulated_frame.h"

#include <system_error>

#include "command_line/frames/all_cores.h"
#include "kv/polarization/fault.h"
#include "toolkit/api/request_checks.h"

namespace kv::polarization {
namespace {

/// Of frames of one sensor; its calibration stack has those from 1 up to less than this.
constexpr std::uint64_t kNumbersApart = 1000;

void check_size(const SimulateOptions& options) {
  check_cells(make_frame(static_cast<std::uint64_t>(options.width),
                         static_cast<std::uint64_t>(options.height), options.camera.bit_depth));
}

std::vector<Stokes> light_of_scene(int width, int height) {
  const Scene scene(width, height);
  std::vector<Stokes> light(pixel_count(width, height));
  for_each_index(static_cast<std::size_t>(height), [&](std::size_t row) {
    for (int column = 0; column < width; ++column) {
      light[row * static_cast<std::size_t>(width) + static_cast<std::size_t>(column)] =
          scene.at(column, static_cast<double>(row));
    }
  });
  return light;
}

}  // namespace

SimulatedSensor sensor_of(const SimulateOptions& options) {
  check_size(options);
  const double scatter = options.scatter.value_or(0);
  SimulatedSensorSettings sensor;
  sensor.width = options.width;
  sensor.height = options.height;
  sensor.mosaic.phase = options.camera.phase;
  sensor.bit_depth = options.camera.bit_depth;
  sensor.seed = options.camera.seed;
  sensor.temporal_noise = options.camera.noise;
  sensor.black_level = full_scale(sensor.bit_depth) / 64.0;
  sensor.class_gains = {1 - 0.02 * scatter, 1, 1 - 0.02 * scatter, 1};
  sensor.gain_scatter *= scatter;
  sensor.diattenuation_scatter *= scatter;
  sensor.orientation_scatter *= scatter;
  sensor.bad_share = options.bad_share;
  return SimulatedSensor(sensor);
}

void make_folder(const std::filesystem::path& folder) {
  std::error_code failure;
  std::filesystem::create_directories(folder, failure);
  if (!std::filesystem::is_directory(folder)) {
    throw Fault(FaultKind::file, "the folder " + folder.string() +
                                     " cannot be made; choose one that you may write to");
  }
}

FrameSimulator::FrameSimulator(const SimulateOptions& options) : options_(options) {
  check_size(options);
  light_ = light_of_scene(options.width, options.height);
  if (options.scatter) sensor_ = sensor_of(options);
}

Frame FrameSimulator::take(std::uint64_t number) const {
  const LightField light = [this](double column, double row) {
    return light_[pixel_count(options_.width, static_cast<int>(row)) +
                  static_cast<std::size_t>(column)];
  };
  if (sensor_) return sensor_->take(light, kNumbersApart * number);
  CameraSettings camera = options_.camera;
  camera.seed += number;
  return photograph(light, options_.width, options_.height, camera);
}

}  // namespace kv::polarization

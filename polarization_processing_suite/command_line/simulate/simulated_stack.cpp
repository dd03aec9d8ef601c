// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/simulate/simulated_stack.h"

#include <string>
#include <vector>

#include "command_line/simulate/simulated_frame.h"
#include "kv/image_files/image_writer.h"

namespace kv::polarization {
namespace {

/// S0 that leaves the brightest class of pixels, behind a parallel polarizer, a tenth of its range.
constexpr double kBrightness = 0.85;

class ManifestStack {
 public:
  ManifestStack(const SimulatedSensor& sensor, std::filesystem::path folder)
      : sensor_(sensor), folder_(std::move(folder)) {}

  void add(const std::string& name, const std::string& kind, const std::string& angle,
           const SensorLight& light) {
    const std::string file = name + std::string(ending_of(depth_recording_format()));
    save_image(folder_ / file, grey_image(sensor_.take(light, ++number_)));
    manifest_ += file + "," + kind + "," + angle + "\n";
  }

  WrittenStack write_manifest() const {
    PendingFile file(folder_ / "stack.csv");
    file.write(manifest_.data(), manifest_.size());
    file.close();
    file.publish();
    return {static_cast<std::size_t>(number_), file.target()};
  }

  void write_truth() const {
    const SensorTruth& truth = sensor_.truth();
    const auto save = [&](const char* name, const Buffer<float>& values) {
      save_image(folder_ / (std::string("truth_") + name + ".npy"),
                 FloatImage{sensor_.settings().width, sensor_.settings().height, 1, values});
    };
    save("black", truth.black);
    save("gain", truth.gain);
    save("diattenuation", truth.diattenuation);
    save("orientation", truth.orientation);
    const std::vector<std::uint16_t> flaws(truth.flaws.begin(), truth.flaws.end());
    save_image(folder_ / "truth_flaws.npy",
               GreyImage{sensor_.settings().width, sensor_.settings().height, 8, flaws});
  }

 private:
  const SimulatedSensor& sensor_;
  std::filesystem::path folder_;
  std::string manifest_ = "file,kind,angle\n";
  std::uint64_t number_ = 0;
};

std::string numbered(const std::string& name, int number) {
  const std::string digits = std::to_string(number);
  return name + "_" + std::string(3 - digits.size(), '0') + digits;
}

}  // namespace

WrittenStack write_calibration_stack(const SimulateOptions& options) {
  make_folder(options.file);
  const SimulatedSensor sensor = sensor_of(options);
  ManifestStack stack(sensor, options.file);
  for (int angle = 0; angle < 180; angle += 5) {
    stack.add(numbered("polarized", angle), "polarized", std::to_string(angle),
              polarized_light(kBrightness, angle));
  }
  for (int number = 0; number < 8; ++number) {
    stack.add(numbered("dark", number), "dark", "", unpolarized_light(0));
    stack.add(numbered("flat", number), "flat", "", unpolarized_light(kBrightness));
  }
  stack.write_truth();
  return stack.write_manifest();
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// A calibration's JSON and its maps, of any content. Half of the inputs get the sums that their
// maps have, so that what lies behind the sums is reached.
#include "kv/calibration.h"

#include <string>

#include "fuzzing/work_folder.h"
#include "toolkit/calibration/file/sha256.h"

namespace kv::fuzzing {
namespace {

using namespace polarization;

constexpr std::array kMaps = {"black",
                              "gain",
                              "diattenuation",
                              "orientation",
                              "gain_error",
                              "diattenuation_error",
                              "orientation_error",
                              "bad"};

constexpr std::size_t kDigits = 64;

/// Puts sums into the JSON, one behind each "sha256".
std::string with_sums(std::string json, std::span<const std::string> sums) {
  constexpr std::string_view key = "\"sha256\": \"";
  std::size_t place = 0;
  for (const std::string& sum : sums) {
    place = json.find(key, place);
    if (place == json.npos || json.size() - place < key.size() + kDigits) break;
    place += key.size();
    json.replace(place, kDigits, sum);
  }
  return json;
}

/// A calibration that was read is one that can be saved, and then is the same; and one by which
/// frames are corrected.
void use(const Calibration& calibration, const WorkFolder& folder) {
  const auto file = folder.path() / "again.json";
  Calibration again;
  if (succeeds([&] { save_calibration(calibration, file); }) &&
      succeeds([&] { again = load_calibration(file); })) {
    require(again.maps.gain == calibration.maps.gain && again.width == calibration.width &&
                again.camera == calibration.camera &&
                again.frames.size() == calibration.frames.size(),
            "a calibration that was saved is the same");
  } else {
    require(allocations_can_fail(), "a calibration that was read can be saved and read again");
  }
  const Mosaic& mosaic = calibration.mosaic;
  Frame frame;
  Frame corrected;
  if (succeeds([&] {
        FrameCorrector corrector(calibration, mosaic, calibration.width, calibration.height);
        frame = make_frame(static_cast<std::uint64_t>(calibration.width),
                           static_cast<std::uint64_t>(calibration.height), calibration.bit_depth);
        for (std::size_t i = 0; i < frame.samples.size(); ++i) {
          frame.samples[i] = static_cast<std::uint16_t>(i * 4099);
        }
        corrector.correct(frame, corrected);
      })) {
    require(corrected.samples.size() == frame.samples.size(), "a frame is corrected");
  }
}

}  // namespace

// nlohmann's JSON asks for memory where it lets nothing out, 16 bytes a member, and ends the
// process when there is none.
void set_up() { spare_allocations_below(1024); }

/// A byte for the sums; the length of the JSON in two bytes, and the JSON; the length of each map's
/// file in two bytes, and the file.
void fuzz(Choices choices) {
  static const WorkFolder folder;
  const bool right_sums = choices.once_in(2);
  std::string json(text_of(choices.take(choices.number<std::uint16_t>())));
  std::array<std::string, kMaps.size()> sums;
  for (std::size_t i = 0; i < kMaps.size(); ++i) {
    const auto bytes = choices.take(choices.number<std::uint16_t>());
    folder.write("camera." + std::string(kMaps[i]) + ".npy", text_of(bytes));
    Sha256 sum;
    sum.add(std::as_bytes(bytes));
    sums[i] = sum.digest();
  }
  if (right_sums) json = with_sums(json, sums);
  const auto file = folder.write("camera.json", json);
  Calibration calibration;
  if (succeeds([&] { calibration = load_calibration(file); })) use(calibration, folder);
}

}  // namespace kv::fuzzing

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/calibration/frame_corrector.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "kv/calibration/calibration_check.h"
#include "kv/polarization/fault.h"
#include "toolkit/api/memory_checks.h"
#include "toolkit/api/memory_faults.h"
#include "toolkit/api/packed_frame.h"
#include "toolkit/api/request_checks.h"
#include "toolkit/api/worker_pool.h"
#include "toolkit/calibration/correction/correct_rows.h"

namespace kv::polarization {
namespace {

std::string size_text(int width, int height) {
  return std::to_string(width) + " x " + std::to_string(height);
}

FramePlace place_within(const Calibration& calibration, const Mosaic& mosaic, int width,
                        int height) {
  check(calibration);
  check(mosaic);
  if (mosaic.phase != calibration.mosaic.phase) {
    refuse("the calibration is of a sensor of phase " +
           std::to_string(cell_angles(calibration.mosaic.phase)[0]) + ", the frame of phase " +
           std::to_string(cell_angles(mosaic.phase)[0]) + "; both must be of the same sensor");
  }
  // Differences of numbers from 0 up are within the range of int.
  const int column = mosaic.x_origin - calibration.mosaic.x_origin;
  const int row = mosaic.y_origin - calibration.mosaic.y_origin;
  if (width < 2 || height < 2 || column < 0 || row < 0 || width > calibration.width - column ||
      height > calibration.height - row) {
    refuse("frames of " + size_text(width, height) + " pixels from column " +
           std::to_string(mosaic.x_origin) + ", row " + std::to_string(mosaic.y_origin) +
           " of the sensor on cannot be corrected; they must be 2 x 2 or more and within the " +
           "calibrated " + size_text(calibration.width, calibration.height) + " from column " +
           std::to_string(calibration.mosaic.x_origin) + ", row " +
           std::to_string(calibration.mosaic.y_origin) + " on");
  }
  return {column, row, width, height, cell_angles(mosaic)};
}

int bits_gained(double greatest_result, const CorrectionSettings& settings) {
  constexpr int greatest_pedestal = 32767;
  if (settings.pedestal > greatest_pedestal) {
    refuse("a pedestal of " + std::to_string(settings.pedestal) +
           " leaves too little for the light; it must be " + std::to_string(greatest_pedestal) +
           " or less");
  }
  constexpr double one_step = 8;  // of coefficients in 16 bits, at most some counts
  const double room = kGreatestCorrected - settings.pedestal - one_step;
  return static_cast<int>(std::floor(std::log2(room / std::max(greatest_result, 1.0))));
}

}  // namespace

class FrameCorrector::Implementation {
 public:
  Implementation(const Calibration& calibration, const Mosaic& mosaic, int width, int height,
                 const CorrectionSettings& settings)
      : width_(width),
        height_(height),
        bit_depth_(calibration.bit_depth),
        noise_(calibration.noise),
        table_(calibration, place_within(calibration, mosaic, width, height), settings.per_cell,
               settings.threads),
        gained_bits_(bits_gained(table_.greatest_result(), settings)),
        settings_{static_cast<std::uint16_t>(
                      std::min<int>(calibration.clip_level, full_scale(calibration.bit_depth))),
                  settings.rescue,
                  {std::ldexp(1.0f, gained_bits_), static_cast<float>(settings.pedestal)}},
        pool_(WorkerPool::threads_of(settings.threads)) {}

  void correct(const FrameView& frame, Frame& corrected, std::span<std::uint8_t> flags) {
    check_request(frame, corrected, flags);
    const FramePart part = packed(frame, {}, room_);
    corrected.reshape(static_cast<unsigned>(width_), static_cast<unsigned>(height_),
                      kCorrectedBitDepth);
    // Some nanosecond a pixel: fewer would not be worth waking a thread.
    constexpr std::size_t least_pixels_a_thread = 100000;
    const std::size_t worth = pixel_count(width_, height_) / least_pixels_a_thread;
    const int bands = static_cast<int>(std::clamp<std::size_t>(
        worth, 1, static_cast<std::size_t>(std::min(pool_.threads(), table_.rows()))));
    const auto boundary = [&](int band) {
      return static_cast<int>(std::int64_t{table_.rows()} * band / bands);
    };
    pool_.run(bands, [&](int band) {
      correct_rows(part, table_, settings_, {corrected.samples.data(), flags.data()},
                   boundary(band), boundary(band + 1));
    });
  }

  int gained_bits() const { return gained_bits_; }
  double resolution() const { return static_cast<double>(table_.scale().step); }

  SampleSettings sample_settings() const {
    SampleSettings samples;
    samples.black_level = settings_.output.pedestal;
    samples.clip_level = kSaturated;
    if (noise_.gain > 0) {
      samples.noise = SensorNoise{noise_.gain * settings_.output.factor, noise_.read_noise};
    }
    return samples;
  }

 private:
  void check_request(const FrameView& frame, const Frame& corrected,
                     std::span<std::uint8_t> flags) const {
    check(frame);
    if (frame.width != width_ || frame.height != height_ || frame.bit_depth != bit_depth_) {
      refuse("the frame of " + size_text(frame.width, frame.height) + " pixels of " +
             std::to_string(frame.bit_depth) + " bits cannot be corrected; it must have " +
             size_text(width_, height_) + " pixels of " + std::to_string(bit_depth_) + " bits");
    }
    std::vector<NamedMemory> memory = {
        {"the frame", frame.bytes},
        {"the corrected frame", std::as_bytes(std::span(corrected.samples))}};
    if (!flags.empty()) {
      check_room("flags", flags.size(), pixel_count(width_, height_));
      memory.push_back({"flags", std::as_bytes(flags)});
    }
    check_overlap(memory);
  }

  int width_;
  int height_;
  int bit_depth_;
  SensorNoise noise_;
  CorrectionTable table_;
  int gained_bits_;
  RowSettings settings_;
  WorkerPool pool_;
  Buffer<std::uint16_t> room_;
};

FrameCorrector::FrameCorrector(const Calibration& calibration, const Mosaic& mosaic, int width,
                               int height, const CorrectionSettings& settings)
    : implementation_(with_memory_faults([&] {
        return std::make_unique<Implementation>(calibration, mosaic, width, height, settings);
      })) {}
FrameCorrector::~FrameCorrector() = default;
FrameCorrector::FrameCorrector(FrameCorrector&&) noexcept = default;
FrameCorrector& FrameCorrector::operator=(FrameCorrector&&) noexcept = default;

FrameCorrector::Implementation& FrameCorrector::implementation() const {
  if (!implementation_) {
    throw Fault(FaultKind::state, "the corrector was moved from; assign another one to it first");
  }
  return *implementation_;
}

void FrameCorrector::correct(const FrameView& frame, Frame& corrected,
                             std::span<std::uint8_t> flags) {
  with_memory_faults([&] { implementation().correct(frame, corrected, flags); });
}
int FrameCorrector::gained_bits() const { return implementation().gained_bits(); }
double FrameCorrector::resolution() const { return implementation().resolution(); }
SampleSettings FrameCorrector::sample_settings() const {
  return implementation().sample_settings();
}

}  // namespace kv::polarization

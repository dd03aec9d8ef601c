// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "kv/calibration/calibration.h"
#include "kv/polarization/frame.h"

namespace kv::polarization {

class FitPlan;

/// What a fit is told beside the frames.
struct FitSettings {
  Mosaic mosaic{};  ///< of all frames
  int threads = 0;  ///< at most; 0 for as many as the machine runs

  /// Taken for the noise where the stack does not tell: the gain with 3 polarized frames or less,
  /// the read noise without two darks. By default 10,000 electrons at full scale and 2.5 electrons.
  std::optional<SensorNoise> noise{};

  double black_level = 0;                     ///< counts, of all pixels; without darks in the stack
  std::optional<std::uint16_t> clip_level{};  ///< as in SampleSettings

  /// DoLP of the polarizer's light. The fit cannot tell it from the pixels' diattenuations.
  double source_dolp = 1;

  /// False for a film turned by hand: only the first polarized frame's angle is believed, and the
  /// others are found together with the sensor. The scale of the angles is determined by the class
  /// means, their sense by the mosaic, which then nothing checks. Three things are left open. The
  /// turn of the source is what the one angle tells; the calibration does not depend on it, as its
  /// zero is the sensor's own. The two others are how far the brightness follows the angle. Flats
  /// of unpolarized light settle them. Without flats, the lamp is taken as steady but for a drift
  /// in proportion to time, and a brightness that varies with the angle by 1 per cent leaves 0.3
  /// degrees in the angles, which no finding shows. Wants 6 frames or more whose angles are spread
  /// over half a turn.
  bool angles_known = true;

  /// The greatest share of pixels at the clip level, beyond that of the stack's best frame, in a
  /// frame that is used.
  double clipped_share = 0.005;
};

/// What is known of a frame of the stack.
struct StackFrame {
  FrameKind kind = FrameKind::polarized;  ///< what light it shows
  double angle = 0;    ///< of the polarizer, degrees, counter-clockwise; other kinds have none
  std::string name{};  ///< for the record and for faults
};

/// The frame that was the `index`-th to be added, from 0 up, once more; with a plan, the frame of
/// that number in the whole stack. Its memory stays until the next call.
using FrameAgain = std::function<FrameView(std::size_t index)>;

/// Finds what a sensor is from a stack of frames: uniform light behind a polarizer that is turned,
/// darks, and flats without a polarizer, in any order.
///
/// Frames are not kept. Whether one fits is known at the end, and those that do not are read a
/// second time to be taken out. Pixels are fitted to the light as the sensor's class means show it,
/// so that the lamp may drift, and angles enter by the class means alone.
///
/// Three polarizer angles (modulo 180 degrees) determine a sensor, if the mean of the four classes
/// is taken for the lamp's level: classes whose gains differ by 2 per cent are then off by up to 1
/// per cent in diattenuation and 0.4 degrees. From 4 angles on, levels are found as well, and so
/// are the noise and noisy pixels. The cross-validation wants 3 angles in each half of the frames.
/// To find wrong frames among them takes 8. 36 or 72 angles over a half or full turn, 8 darks and 8
/// flats make a good stack.
///
/// Gains hold what is uneven in the light of the source as well: they are those of sensor, lens and
/// source.
///
/// Several processes or machines can take in a stack together: each has a part, a fit of the same
/// FitPlan, and the parts are merged before the end. A part holds 53 bytes a pixel while it takes
/// frames in, and travels as so many bytes.
///
/// Memory: 86 bytes a pixel, 430 megabytes for 5 megapixels; 29 of them are the calibration's maps.
/// Time for 5 megapixels: some 20 ms a frame, bound by memory, and 2 s at the end.
/// Threads: one thread at a time uses a fit. Parts know nothing of each other until they are
/// merged.
class CalibrationFit {
 public:
  /// Throws Fault of kind argument for settings out of their range, and of kind memory.
  explicit CalibrationFit(const FitSettings& settings);

  /// A part of the fit that the plan tells, on that many threads at most; 0 for as many as the
  /// machine runs. It takes no memory for the pixels before there is a frame to sum. Throws Fault
  /// of kind argument for a number of threads that cannot be.
  explicit CalibrationFit(const FitPlan& plan, int threads = 0);

  ~CalibrationFit();
  CalibrationFit(CalibrationFit&&) noexcept;
  CalibrationFit& operator=(CalibrationFit&&) noexcept;

  /// Takes a frame in. The first one sets size and bit depth; frames of other ones are recorded and
  /// refused. Throws Fault of kind argument for a frame that check() refuses or whose sides are not
  /// even, and for an angle that is no number; of kind state after finish(), and in a part of a
  /// plan.
  void add(const FrameView& frame, const StackFrame& what);

  /// Takes in the frame of that number of the plan's stack, from 0 up, in any order. Throws Fault
  /// of kind argument for a frame that check() refuses, a number that the plan does not have, one
  /// that was added before, and a frame that is not the one that the plan was made with, as far as
  /// its size tells; of kind state after finish(), and without a plan.
  void add_planned(const FrameView& frame, std::size_t number);

  /// Adds what another part of the same plan took in; in any order, and after other merges on
  /// either side. `other` is then as if it was moved from, and its memory is given back. 5
  /// megapixels take 30 ms, bound by memory, and nothing when one of both has no frames yet.
  ///
  /// Throws Fault of kind argument when the other part is of another plan or of none, when it is
  /// this one, and when both have the same frame; of kind state when one of both is finished.
  /// Nothing has changed then.
  void merge(CalibrationFit&& other);

  /// How many bytes a part has: 53 a pixel and 8 kilobytes a frame; without frames, a few
  /// kilobytes. Throws Fault of kind state after finish(), and without a plan.
  std::size_t byte_size() const;

  /// Writes the part, its plan included, into memory of byte_size() bytes at any address: a file, a
  /// message, or memory that processes share. The part stays as it is. Throws Fault of kind
  /// argument for memory of another size, and of kind state as byte_size().
  void write(std::span<std::byte> memory) const;

  /// The part that write() wrote, on this machine or another one of the same byte order. The bytes
  /// may be given back afterwards. Values are held against what frames can give, but a sum that was
  /// changed within that passes: bytes that travel far want a checksum of their own. 5 megapixels
  /// take 0.1 s, and write() 30 ms; longer where the system has to find the memory first.
  ///
  /// Throws Fault of kind argument for bytes that are not those of a part, complete, of this
  /// version and byte order; and of kind memory.
  static CalibrationFit from_bytes(std::span<const std::byte> bytes, int threads = 0);

  /// What the frames tell. `again` gets those that have to be taken out; it may be empty if there
  /// are none. Ends the fit. The records of frames are in the order of adding; with a plan, in that
  /// of their numbers.
  ///
  /// Throws Fault of kind argument, in words: no polarized frames; angles that do not determine the
  /// sensor; polarizers that do not lie as the mosaic tells; a frame that came again with other
  /// samples. Of kind state when called twice, when a frame has to be read again without `again`,
  /// or while frames of the plan are missing, which does not end the fit. What `again` throws
  /// passes through.
  Calibration finish(const FrameAgain& again);

 private:
  class Implementation;
  explicit CalibrationFit(std::unique_ptr<Implementation> implementation);
  Implementation& implementation() const;

  std::unique_ptr<Implementation> implementation_;
};

}  // namespace kv::polarization

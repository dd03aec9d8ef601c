#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "kv/calibration/calibration.h"
#include "kv/polarization/frame.h"

namespace kv::polarization {

struct FitSettings {
  Mosaic mosaic{};
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

struct StackFrame {
  FrameKind kind = FrameKind::polarized;
  double angle = 0;    ///< of the polarizer, degrees, counter-clockwise; other kinds have none
  std::string name{};  ///< for the record and for faults
};

/// The frame that was the `index`-th to be added, once more; its memory stays until the next call.
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
/// Memory: 86 bytes a pixel, 430 megabytes for 5 megapixels; 29 of them are the calibration's maps.
/// Time for 5 megapixels: some 20 ms a frame, bound by memory, and 2 s at the end.
/// Threads: one thread at a time uses a fit.
class CalibrationFit {
 public:
  /// Throws Fault of kind argument for settings out of their range, and of kind memory.
  explicit CalibrationFit(const FitSettings& settings);
  ~CalibrationFit();
  CalibrationFit(CalibrationFit&&) noexcept;
  CalibrationFit& operator=(CalibrationFit&&) noexcept;

  /// Takes a frame in. The first one sets size and bit depth; frames of other ones are recorded and
  /// refused. Throws Fault of kind argument for a frame that check() refuses or whose sides are not
  /// even, and for an angle that is no number; of kind state after finish().
  void add(const FrameView& frame, const StackFrame& what);

  /// What the frames tell. `again` gets those that have to be taken out; it may be empty if there
  /// are none. Ends the fit.
  ///
  /// Throws Fault of kind argument, in words: no polarized frames; angles that do not determine the
  /// sensor; polarizers that do not lie as the mosaic tells; a frame that came again with other
  /// samples. Of kind state when called twice, or when a frame has to be read again without
  /// `again`. What `again` throws passes through.
  Calibration finish(const FrameAgain& again);

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace kv::polarization

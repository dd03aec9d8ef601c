// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "kv/calibration/calibration.h"
#include "kv/polarization/frame.h"
#include "kv/polarization/quality.h"

namespace kv::polarization {

/// Bits of every corrected frame. Its greatest sample, 65535, stands for clipped ones alone.
inline constexpr int kCorrectedBitDepth = 16;

/// How frames are corrected.
struct CorrectionSettings {
  /// A matrix of its own for each cell; else one for all, made of the means of the four classes.
  bool per_cell = true;

  /// Solves a cell with one clipped sample from the other three. Such cells take some
  /// thirty times as long as others.
  bool rescue = false;

  /// What black becomes, in corrected counts. With 0, results below black become 0: where the light
  /// is weaker than the noise, means come out too high, by 0.4 standard deviations in the dark.
  /// Some six standard deviations of the dark noise keep all of it. Planes know no black level, and
  /// want 0; maps and regions take sample_settings().
  std::uint16_t pedestal = 0;

  int threads = 1;  ///< that work on a frame, 0 for as many as the machine runs at once
};

/// Turns raw frames into those that a sensor of equal gains and ideal polarizers would have taken,
/// so that planes, maps and regions, which take such a sensor, measure right.
///
/// A frame is corrected in its own 2x2 cells, those that begin at its even columns and rows,
/// whatever its place on the sensor. With A the measured analyser matrix of the cell's four pixels
/// and A0 that of ideal ones, samples x become
///
///     A0 pinv(A) (x - black) 2^gained_bits + pedestal,
///
/// rounded to the nearest count, 0 at least. Within a cell this keeps what its Stokes values are by
/// least squares and nothing else: light must not differ from pixel to pixel, or the difference is
/// shared among them. In an odd last column or row pixels are corrected in the cell that they share
/// with their left or upper neighbours.
///
/// The bits that samples leave free are used: gained_bits() is such that no cell of good pixels,
/// whatever its samples below the clip level, reaches 65535. Frames of 12 bits usually gain 3; of
/// 16 bits, -1, as corrected samples can be greater than raw ones.
///
/// Cells apart, by the flags of kv/polarization/quality.h, which all pixels of a cell share:
/// - one bad pixel: solved from the other three. `rescued`
/// - one clipped sample: likewise, when settings ask for it. `clipped` and `rescued`
/// - other clipped samples, or results beyond the range: all four become 65535, so that whoever
///   takes that for the clip level knows them. `clipped`, and `bad_pixel` if there is one, too
/// - more bad pixels: less their black levels, else left as they are. `bad_pixel`.
///   Maps do not know these cells; join their quality with the flags.
///
/// Threads: one thread at a time uses a corrector; several work side by side.
///
/// Arithmetic: samples and black levels count in 15 bits, which is 1/8 count of 12-bit frames;
/// 16-bit frames are halved. Coefficients are in 15 bits too, as deviations from those of the
/// classes: their resolution() follows their scatter, some 5e-6 for one of 1 per cent. The few
/// cells further out are kept apart in floats. Results are rounded by the thread's rounding mode.
///
/// Memory: 8 bytes a pixel. Time: some 1.7 times the copy of these and the frames on one
/// thread, 3.5 ms for 5 megapixels on a server of 2023; frames with many clipped samples, up to 0.1
/// microseconds more for each.
class FrameCorrector {
 public:
  /// For frames of that place and size within the calibrated region. It keeps nothing of the
  /// calibration. Takes some 0.1 microseconds a pixel.
  ///
  /// Throws Fault of kind argument for a calibration that check() refuses, a mosaic of another
  /// phase, a frame that is not within the calibrated region or has a side below 2, and a pedestal
  /// above 32767; Fault of kind memory.
  FrameCorrector(const Calibration& calibration, const Mosaic& mosaic, int width, int height,
                 const CorrectionSettings& settings = {});
  ~FrameCorrector();
  FrameCorrector(FrameCorrector&&) noexcept;
  FrameCorrector& operator=(FrameCorrector&&) noexcept;

  /// Fills a frame of the same size and mosaic, and if a place is given, the flags, one byte a
  /// pixel, row by row; the same bytes on any number of threads.
  ///
  /// Throws Fault of kind argument, before anything is computed: a frame that check() refuses, of
  /// another size or bit depth than the corrector is for; flags with less room than the frame
  /// fills; memory that is shared, even partly. Throws Fault of kind memory, and of kind state for
  /// a corrector that was moved from.
  void correct(const FrameView& frame, Frame& corrected, std::span<std::uint8_t> flags = {});

  /// A raw count is 2^gained_bits corrected ones.
  int gained_bits() const;

  /// Coefficients are multiples of it; samples are sums of some 1/2 of each of four samples, so
  /// that errors are about the resolution of the sample.
  double resolution() const;

  /// How maps and regions have to understand corrected frames: black level, clip level and noise.
  /// (The noise of a cell's samples is no longer independent; that of Stokes values comes out right
  /// as far as gains are alike.)
  SampleSettings sample_settings() const;

 private:
  class Implementation;
  Implementation& implementation() const;

  std::unique_ptr<Implementation> implementation_;
};

}  // namespace kv::polarization

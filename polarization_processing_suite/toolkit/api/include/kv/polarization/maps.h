// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

#include "kv/polarization/buffer.h"
#include "kv/polarization/frame.h"
#include "kv/polarization/mosaic.h"
#include "kv/polarization/quality.h"

namespace kv::polarization {

/// Measurements of every pixel of a frame in 32-bit floats, how far to believe them, and which ones
/// not to believe.
///
/// All maps have the size of the frame. A pixel's values are made of the four samples of its 2x2
/// neighbourhood: its own, and those of its right, its lower and its diagonal neighbour; at the
/// right and bottom edges the neighbour on the other side takes the place. With the samples I0 to
/// I135 less the black level,
///
///     S0 = (I0 + I45 + I90 + I135) / 2,   S1 = I0 - I90,   S2 = I45 - I135.
///
/// Neighbouring pixels share samples, and so their errors: a mean over pixels is less certain than
/// their number says. Regions (kv/polarization/region.h) count each sample once.
enum class Map : std::uint8_t {
  s0,    ///< counts
  s1,    ///< counts
  s2,    ///< counts
  dolp,  ///< sqrt(S1^2 + S2^2) / S0, from 0 up; not bounded by 1, see quality. NaN where S0 <= 0

  /// Angle of linear polarization in degrees, above -90 up to 90: 0 along the rows, growing
  /// counter-clockwise. NaN where S0 <= 0; 0 where S1 and S2 are 0. Within 0.0001 degree of the
  /// arctangent.
  angle,

  /// DoLP without what noise adds to it on average: the modified asymptotic estimate of
  /// Plaszczynski et al., Monthly Notices of the RAS 439 (2014). NaN where S0 <= 0.
  debiased_dolp,

  // Standard deviations by first-order propagation of the noise of the four samples. Where a sample
  // was rescued they count what it was made of.
  s0_sigma,  ///< counts
  s1_sigma,  ///< counts
  s2_sigma,  ///< counts

  /// Within 4 per cent where DoLP is above 3 sigma. Below, first order no longer holds: at a DoLP
  /// of 0 it tells half too much, and DoLP is 1.25 sigma on average. NaN where S0 <= 0.
  dolp_sigma,

  /// In degrees, within 6 per cent where DoLP is above 4 sigma. NaN where DoLP is less than 3
  /// sigma, where the angle is undefined, or S0 <= 0: at a DoLP of 0 first order tells 24 degrees,
  /// while an angle that is anybody's guess scatters by 52. One unpolarized pixel in a hundred
  /// passes.
  angle_sigma,

  quality  ///< bytes of quality::Flag bits, the one map that is not of floats
};

/// A line of the list of maps.
struct MapTraits {
  Map map;                ///< whose line it is
  std::string_view name;  ///< for files and dictionaries
  bool wants_noise;       ///< has no value without SampleSettings::noise
};

/// The one list of maps, in the order of Map.
inline constexpr std::array<MapTraits, 12> kMaps{{{Map::s0, "s0", false},
                                                  {Map::s1, "s1", false},
                                                  {Map::s2, "s2", false},
                                                  {Map::dolp, "dolp", false},
                                                  {Map::angle, "angle", false},
                                                  {Map::debiased_dolp, "debiased_dolp", true},
                                                  {Map::s0_sigma, "s0_sigma", true},
                                                  {Map::s1_sigma, "s1_sigma", true},
                                                  {Map::s2_sigma, "s2_sigma", true},
                                                  {Map::dolp_sigma, "dolp_sigma", true},
                                                  {Map::angle_sigma, "angle_sigma", true},
                                                  {Map::quality, "quality", false}}};

/// The place of a map in the list.
constexpr std::size_t index_of(Map map) { return static_cast<std::size_t>(map); }

/// A choice of maps.
struct MapSet {
  std::uint16_t bits = 0;  ///< one for each map, the first one's the lowest

  constexpr MapSet() = default;

  /// Of the maps that are named.
  template <class... Maps>
  constexpr explicit MapSet(Map first, Maps... others) {
    add(first);
    (add(others), ...);
  }

  /// Of all of them.
  static constexpr MapSet all() {
    MapSet set;
    set.bits = (1u << kMaps.size()) - 1;
    return set;
  }

  /// Members of the choice.
  constexpr void add(Map map) { bits = static_cast<std::uint16_t>(bits | 1u << index_of(map)); }
  constexpr bool has(Map map) const { return (bits >> index_of(map) & 1u) != 0; }
  constexpr bool empty() const { return bits == 0; }
  constexpr bool operator==(const MapSet&) const = default;
};

/// The maps to fill from a frame, in somebody else's memory: one element a pixel, row by row
/// without gaps; empty for maps that are not wanted. They may share no byte with each other or with
/// what they are made from.
struct MapViews {
  /// The map of that name, in the unit that Map tells.
  std::span<float> s0{};
  std::span<float> s1{};
  std::span<float> s2{};
  std::span<float> dolp{};
  std::span<float> angle{};
  std::span<float> debiased_dolp{};
  std::span<float> s0_sigma{};
  std::span<float> s1_sigma{};
  std::span<float> s2_sigma{};
  std::span<float> dolp_sigma{};
  std::span<float> angle_sigma{};
  std::span<std::uint8_t> quality{};

  /// Any map but quality.
  std::span<float> values(Map map) const;
  std::span<float>& values(Map map);
};

/// Owned maps of one frame, whose memory is used again for the next one.
class Maps {
 public:
  /// As reshape() was asked for.
  int width() const { return width_; }
  int height() const { return height_; }
  MapSet wanted() const { return wanted_; }

  /// Makes room for those maps of a frame of that size; their values are lost.
  void reshape(int width, int height, MapSet wanted);

  /// Empty for maps that are not wanted; values() has any map but quality.
  std::span<const float> values(Map map) const { return values_[index_of(map)]; }
  std::span<const std::uint8_t> quality() const { return quality_; }

  /// For MapMaker::fill(). They last until the next reshape().
  MapViews views();

 private:
  int width_ = 0;
  int height_ = 0;
  MapSet wanted_;
  std::array<Buffer<float>, index_of(Map::quality)> values_;
  Buffer<std::uint8_t> quality_;
};

/// Evens out the brightness within each neighbourhood, against the false polarization that an edge
/// of brightness leaves: half of it or less remains where a lens blurs edges by a pixel or more,
/// two thirds where it does not. True changes of polarization are blurred a little. With L, the
/// binomial mean of the 3x3 samples around one (1 2 1, 2 4 2, 1 2 1; every class of pixels weighs a
/// quarter), each of the four samples is multiplied by the mean L of the four and divided by its
/// own L.
struct IntensityCompensation {
  /// Counts above black. A pixel whose neighbourhood has an L below it is left as it is, and gets
  /// the flag not_compensated: there L is mostly noise.
  float least_mean = 4;
};

/// How maps are made.
struct MapSettings {
  SampleSettings samples{};  ///< what the samples tell

  /// Never by default: it changes measurements. L is made of the samples as they are, bad and
  /// clipped ones too. Standard deviations take the factors as free of noise; in flat fields the
  /// true ones are a sixth lower, as L averages over samples beyond the four.
  std::optional<IntensityCompensation> compensation{};
};

/// Makes maps of frames, and keeps the memory of the work from frame to frame. It needs no
/// processor, and takes ideal polarizers and equal gains.
///
/// Threads: one thread at a time uses a map maker; several work side by side.
///
/// Cost: one pass over the frame, and no more work than the maps asked for need. For 5 megapixels
/// on one core of a server some 17 ms for S0, S1, S2, DoLP and angle, 50 ms for everything; 20 ms
/// more with compensation. Rescue costs nothing but at clipped pixels, some 40 ns for each.
class MapMaker {
 public:
  /// A frame is filled on up to that many threads at once, 0 standing for as many as the machine
  /// runs, to the same bytes. Throws Fault: argument, memory.
  explicit MapMaker(int threads = 1);
  ~MapMaker();
  MapMaker(MapMaker&&) noexcept;
  MapMaker& operator=(MapMaker&&) noexcept;

  /// Fills maps from a whole frame of 2 x 2 pixels or more.
  ///
  /// Throws Fault of kind argument, before anything is computed: a frame that check() refuses or
  /// that has a side below 2; an unknown phase or a negative origin; settings out of their range;
  /// bad pixels of a sensor that the frame does not fit on; no map, one of a size below the
  /// frame's, or one that wants the noise without it; memory that is shared, even partly. Throws
  /// Fault of kind memory, and of kind state for a map maker that was moved from.
  void fill(const FrameView& frame, const Mosaic& mosaic, const MapSettings& settings,
            const MapViews& maps);

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace kv::polarization

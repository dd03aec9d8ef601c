#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kevrinth_qrm_polarization_processor.h"
#include "toolkit/frame.h"

namespace kv {

enum class Plane : std::size_t {
  normalized_stokes,
  intensity,
  stokes_s1,
  stokes_s2,
  azimuth,
  dolp
};

inline constexpr std::size_t kPlaneCount = 6;

inline constexpr std::array<std::string_view, kPlaneCount> kPlaneNames = {
    "normalized_stokes", "intensity", "stokes_s1", "stokes_s2", "azimuth", "dolp"};

constexpr std::string_view name_of(Plane plane) {
  return kPlaneNames[static_cast<std::size_t>(plane)];
}

std::optional<Plane> plane_named(std::string_view name);

/// A choice of planes.
class PlaneSet {
 public:
  static PlaneSet all();
  void add(Plane plane) { bits_.set(static_cast<std::size_t>(plane)); }
  bool has(Plane plane) const { return bits_.test(static_cast<std::size_t>(plane)); }
  bool empty() const { return bits_.none(); }
  bool has_quantised() const;  ///< any plane but normalized_stokes

 private:
  std::bitset<kPlaneCount> bits_;
};

/// How the mosaic lies under the frame, and what is wanted of it.
struct TransformSettings {
  PolarPhase phase = kv_polar_phase_0;  ///< polarizer behind the sensor's top-left pixel
  int x_origin = 0;                     ///< column of the frame's first pixel on the sensor
  int y_origin = 0;                     ///< row of the frame's first pixel on the sensor
  std::uint16_t output_max = 65535;     ///< full scale of the 16-bit planes
  PlaneSet planes = PlaneSet::all();
};

/// The planes of one frame; those that were not asked for are empty.
struct Planes {
  int width = 0;
  int height = 0;
  std::vector<float> normalized_stokes;  ///< two a pixel: S1/S0, S2/S0
  std::vector<std::uint16_t> intensity;
  std::vector<std::uint16_t> stokes_s1;
  std::vector<std::uint16_t> stokes_s2;
  std::vector<std::uint16_t> azimuth;
  std::vector<std::uint16_t> dolp;

  /// Makes room for those of a frame; buffers of an earlier frame are used again. A transform does
  /// it too: called before, it keeps the cost of fresh memory out of the transform.
  void make_room(const Frame& frame, PlaneSet wanted);

  /// Any plane but normalized_stokes.
  std::vector<std::uint16_t>& quantised(Plane plane);
  const std::vector<std::uint16_t>& quantised(Plane plane) const;
};

/// What a status means, in words for the user of a tool.
std::string status_message(ProcessorStatus status);

/// The phase whose first polarizer stands at 0, 45, 90 or 135 degrees; none for other angles.
std::optional<PolarPhase> phase_at(int degrees);

/// Owns one processor of the library, and keeps the library open for as long as it lives.
class Processor {
 public:
  Processor();
  ~Processor();
  Processor(const Processor&) = delete;
  Processor& operator=(const Processor&) = delete;

  /// Fills `planes` from a whole frame.
  /// The 16-bit planes are the library's to the last bit. Of normalized_stokes every pair stands at
  /// its pixel's place, which a single call of the library does not grant.
  /// Throws Error, before anything is computed, when the frame or the settings can't be used.
  void transform(const Frame& frame, const TransformSettings& settings, Planes& planes) const;

 private:
  PolarizationProcessor* handle_ = nullptr;
};

}  // namespace kv

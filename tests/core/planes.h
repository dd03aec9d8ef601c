#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <vector>

namespace kv::test {

/// A buffer between guard elements. All of it starts out as one byte pattern.
template <class Element>
class GuardedPlane {
 public:
  static constexpr std::size_t kGuard = 64;  ///< More than a kernel stores at once.
  static constexpr unsigned char kFill = 0xA5;

  explicit GuardedPlane(std::size_t size) : storage_(size + 2 * kGuard) { clear(); }

  void clear() { std::memset(storage_.data(), kFill, storage_.size() * sizeof(Element)); }

  Element* data() { return storage_.data() + kGuard; }
  std::size_t size() const { return storage_.size() - 2 * kGuard; }
  Element operator[](std::size_t index) const { return storage_[kGuard + index]; }

  /// Guards included.
  std::span<const unsigned char> bytes() const {
    return {reinterpret_cast<const unsigned char*>(storage_.data()),
            storage_.size() * sizeof(Element)};
  }

  bool untouched() const { return all_fill(bytes()); }
  bool guards_untouched() const {
    constexpr std::size_t guard = kGuard * sizeof(Element);
    return all_fill(bytes().first(guard)) && all_fill(bytes().last(guard));
  }

 private:
  static bool all_fill(std::span<const unsigned char> bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](unsigned char b) { return b == kFill; });
  }

  std::vector<Element> storage_;
};

inline constexpr std::size_t kPlaneCount = 6;
inline constexpr std::array<const char*, kPlaneCount> kPlaneNames{
    "normalized_stokes", "intensity", "stokes_s1", "stokes_s2", "azimuth", "dolp"};

/// A set of planes is a number whose bits stand for the planes in the order of their names.
using PlaneNumber = unsigned;
inline constexpr PlaneNumber kAllPlanes = (1u << kPlaneCount) - 1;

/// Buffers for the six planes of a frame.
struct Planes {
  explicit Planes(std::size_t pixels)
      : normalized_stokes(2 * pixels),
        intensity(pixels),
        stokes_s1(pixels),
        stokes_s2(pixels),
        azimuth(pixels),
        dolp(pixels) {}

  GuardedPlane<float> normalized_stokes;
  GuardedPlane<std::uint16_t> intensity;
  GuardedPlane<std::uint16_t> stokes_s1;
  GuardedPlane<std::uint16_t> stokes_s2;
  GuardedPlane<std::uint16_t> azimuth;
  GuardedPlane<std::uint16_t> dolp;

  /// Writes the addresses of the wanted planes, and null for the others, into a record that names
  /// them as this one does.
  template <class Record>
  void hand_to(Record& record, PlaneNumber wanted = kAllPlanes) {
    record.normalized_stokes = wanted & 1 ? normalized_stokes.data() : nullptr;
    record.intensity = wanted & 2 ? intensity.data() : nullptr;
    record.stokes_s1 = wanted & 4 ? stokes_s1.data() : nullptr;
    record.stokes_s2 = wanted & 8 ? stokes_s2.data() : nullptr;
    record.azimuth = wanted & 16 ? azimuth.data() : nullptr;
    record.dolp = wanted & 32 ? dolp.data() : nullptr;
  }

  /// The memory of each plane with its guards, in the order of the names.
  std::array<std::span<const unsigned char>, kPlaneCount> bytes() const {
    return {normalized_stokes.bytes(), intensity.bytes(), stokes_s1.bytes(),
            stokes_s2.bytes(),         azimuth.bytes(),   dolp.bytes()};
  }

  void clear() {
    normalized_stokes.clear();
    intensity.clear();
    stokes_s1.clear();
    stokes_s2.clear();
    azimuth.clear();
    dolp.clear();
  }

  bool untouched() const {
    return normalized_stokes.untouched() && intensity.untouched() && stokes_s1.untouched() &&
           stokes_s2.untouched() && azimuth.untouched() && dolp.untouched();
  }
  bool guards_untouched() const {
    return normalized_stokes.guards_untouched() && intensity.guards_untouched() &&
           stokes_s1.guards_untouched() && stokes_s2.guards_untouched() &&
           azimuth.guards_untouched() && dolp.guards_untouched();
  }
};

/// Says where planes of a frame `width` columns wide first differ from what they should be, guards
/// included; planes that are not wanted should be untouched. Empty if they don't differ.
std::string difference(const Planes& actual, const Planes& expected, std::size_t width,
                       PlaneNumber wanted = kAllPlanes);

}  // namespace kv::test

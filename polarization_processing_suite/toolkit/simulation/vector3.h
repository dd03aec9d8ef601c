// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cmath>

namespace kv::polarization {

struct Vector3 {
  double x;
  double y;
  double z;
};

constexpr Vector3 operator+(Vector3 a, Vector3 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
constexpr Vector3 operator-(Vector3 a, Vector3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
constexpr Vector3 operator*(double s, Vector3 a) { return {s * a.x, s * a.y, s * a.z}; }
constexpr double dot(Vector3 a, Vector3 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
constexpr Vector3 cross(Vector3 a, Vector3 b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline Vector3 unit(Vector3 a) { return (1.0 / std::sqrt(dot(a, a))) * a; }

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "polarization_processor/records/transform_request.h"

namespace kv::bench {

/// Intensity, azimuth and DoLP the way of most programs for polarization cameras: OpenCV's Bayer
/// interpolation twice, each giving two of the four polarizers, then whole planes of floats, one
/// operation after the other. On one thread, with all buffers kept from frame to frame. The planes
/// are like the library's and not the same: OpenCV interpolates over larger neighbourhoods.
class OpencvBaseline {
 public:
  OpencvBaseline();
  ~OpencvBaseline();

  /// What the build lacks for it; null where it lacks nothing.
  static const char* missing();

  /// Fills the three planes of a request of phase 0.
  void operator()(const TransformRequest& request);

 private:
  struct Buffers;
  std::unique_ptr<Buffers> buffers_;
};

}  // namespace kv::bench

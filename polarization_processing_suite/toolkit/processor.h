#pragma once

#include "kevrinth_qrm_polarization_processor.h"
#include "toolkit/frame.h"
#include "toolkit/planes.h"
#include "toolkit/transform_settings.h"

namespace kv {

/// Owns one processor of the library, and keeps the library open for as long as it lives.
class Processor {
 public:
  Processor();
  ~Processor();
  Processor(const Processor&) = delete;
  Processor& operator=(const Processor&) = delete;

  /// Fills `planes` from a whole frame. The 16-bit planes are the library's to the last bit. Every
  /// pair of normalized_stokes stands at the place of its pixel, which a single call of the library
  /// does not promise.
  /// Throws Error, before anything is computed, when the frame or the settings cannot be used.
  void transform(const Frame& frame, const TransformSettings& settings, Planes& planes) const;

 private:
  PolarizationProcessor* handle_ = nullptr;
};

}  // namespace kv

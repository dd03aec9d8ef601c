#pragma once

#include <memory>

#include "kv/polarization/frame.h"
#include "kv/polarization/mosaic.h"
#include "kv/polarization/planes.h"
#include "kv/polarization/weights.h"

namespace kv::polarization {

/// One processor of the library, which stays open for as long as a processor lives.
///
/// Threads: one thread at a time uses a processor; as many threads as there are processors work
/// side by side. Processors may be made and ended on any thread.
///
/// Exceptions: each function throws Fault alone. One that throws has changed nothing, but that
/// planes may be partly filled when there was no memory.
///
/// A processor that was moved from can be assigned to and ended; all else throws Fault of kind
/// state.
class Processor {
 public:
  /// With the library's default weights. Throws Fault: unsupported on a machine without SSE,
  /// memory.
  Processor();
  ~Processor();
  Processor(Processor&&) noexcept;
  Processor& operator=(Processor&&) noexcept;

  /// Fills planes from a whole frame. The 16-bit planes are the library's to the last bit. Every
  /// pair of normalized_stokes stands at the place of its pixel, which a single call of the library
  /// does not promise.
  ///
  /// Throws Fault of kind argument, before anything is computed: a frame that check() refuses, that
  /// has a side below 2, or a height above 2 with a width below 4; an unknown phase or a negative
  /// origin; no plane, one of a size other than the frame's, an output_max of 0; memory that is
  /// shared, even partly.
  void transform(const FrameView& frame, const Mosaic& mosaic, const PlaneViews& planes);

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace kv::polarization

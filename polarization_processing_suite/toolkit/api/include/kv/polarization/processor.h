// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>

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
/// Exceptions: each function throws Fault alone. One that throws has changed nothing, except that
/// planes may be partly filled when there was no memory.
///
/// A processor that was moved from can be assigned to and ended; all else throws Fault of kind
/// state.
class Processor {
 public:
  /// With the library's default weights. A frame is computed on up to that many threads at once, 0
  /// standing for as many as the machine runs; those beside the caller's wait between calls. Throws
  /// Fault: unsupported on a machine without SSE, argument, memory.
  explicit Processor(int threads = 1);
  ~Processor();
  Processor(Processor&&) noexcept;
  Processor& operator=(Processor&&) noexcept;

  /// Of all transforms to come. Default ones, at first.
  Weights weights() const;
  void set_weights(const Weights& weights);

  /// Back to the library's default ones.
  void reset_weights();

  /// Fills planes from a whole frame.
  ///
  /// The 16-bit planes are those of one call of the library to the last bit, on any number of
  /// threads. Every pair of normalized_stokes stands at the place of its pixel, which a single call
  /// does not promise. With WeightReach::every_pixel the values are the library's too, each pixel
  /// with the processor's weights.
  ///
  /// Costs, beside one call of the library for the same planes at 2448 x 2048, on a server
  /// processor of 2023:
  /// - 16-bit planes: none. Two threads take 0.52 to 0.63 of the time, as far as memory keeps up; a
  ///   frame of less than 0.15 ms of work stays on one.
  /// - normalized_stokes: 2.1 to 2.3 times the call on one thread, 1.2 to 1.5 times on two. In a
  ///   single call half of the pairs replace each other, so that all of them are twice the work and
  ///   twice the bytes.
  /// - each further output_max: one more call.
  /// - WeightReach::every_pixel: 7 to 12 times the call, on two threads 4 to 6 times.
  /// - a frame of 8 bits, with gaps, left-aligned or at an odd address: a copy, 0.6 ms.
  ///
  /// Throws Fault of kind argument, before anything is computed: a frame that check() refuses, that
  /// has a side below 2, or a height above 2 with a width below 4; an unknown phase or a negative
  /// origin; no plane, one with less room than the frame fills, an output_max of 0; memory that is
  /// shared, even partly.
  void transform(const FrameView& frame, const Mosaic& mosaic, const PlaneViews& planes,
                 WeightReach reach = WeightReach::as_library);

 private:
  class Implementation;
  Implementation& implementation() const;

  std::unique_ptr<Implementation> implementation_;
};

/// Calls work(processor, index) for each index below `count`, side by side on several threads, each
/// with a processor of its own: for many frames, as one thread a frame loses nothing. Indices begin
/// in their order. `threads` is as for Processor, and `weights` are those of all processors.
///
/// After a call of `work` that throws, no other one begins; the exception is thrown when those that
/// run are done.
void for_each_frame(std::size_t count, const std::function<void(Processor&, std::size_t)>& work,
                    int threads = 0, const std::optional<Weights>& weights = {});

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>

#include "kv/polarization/fault.h"
#include "kv/polarization/maps.h"
#include "toolkit/api/maps/map_checks.h"
#include "toolkit/api/maps/map_rows.h"
#include "toolkit/api/memory_faults.h"
#include "toolkit/api/packed_frame.h"
#include "toolkit/api/worker_pool.h"

namespace kv::polarization {

class MapMaker::Implementation {
 public:
  explicit Implementation(int threads) : pool_(WorkerPool::threads_of(threads)) {}

  void fill(const FrameView& frame, const Mosaic& mosaic, const MapSettings& settings,
            const MapViews& maps) {
    check_request(frame, mosaic, settings, maps);
    const FramePart part = packed(frame, mosaic, samples_);
    // Some 3 nanoseconds a pixel: fewer would not be worth waking a thread.
    constexpr std::size_t least_pixels_a_thread = 40000;
    const std::size_t worth = pixel_count(frame.width, frame.height) / least_pixels_a_thread;
    const int bands = static_cast<int>(std::clamp<std::size_t>(
        worth, 1, static_cast<std::size_t>(std::min(pool_.threads(), frame.height))));
    const auto boundary = [&](int band) {
      return static_cast<int>(std::int64_t{frame.height} * band / bands);
    };
    pool_.run(bands, [&](int band) {
      map_rows(part, mosaic, settings, maps, boundary(band), boundary(band + 1));
    });
  }

 private:
  WorkerPool pool_;
  Buffer<std::uint16_t> samples_;
};

MapMaker::MapMaker(int threads)
    : implementation_(
          with_memory_faults([&] { return std::make_unique<Implementation>(threads); })) {}
MapMaker::~MapMaker() = default;
MapMaker::MapMaker(MapMaker&&) noexcept = default;
MapMaker& MapMaker::operator=(MapMaker&&) noexcept = default;

void MapMaker::fill(const FrameView& frame, const Mosaic& mosaic, const MapSettings& settings,
                    const MapViews& maps) {
  if (!implementation_) {
    throw Fault(FaultKind::state, "the map maker was moved from; assign another one to it first");
  }
  with_memory_faults([&] { implementation_->fill(frame, mosaic, settings, maps); });
}

}  // namespace kv::polarization

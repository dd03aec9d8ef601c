#include "kv/polarization/maps.h"
#include "toolkit/api/maps/map_checks.h"
#include "toolkit/api/maps/map_rows.h"
#include "toolkit/api/packed_frame.h"

namespace kv::polarization {

void MapMaker::fill(const FrameView& frame, const Mosaic& mosaic, const MapSettings& settings,
                    const MapViews& maps) {
  check_request(frame, mosaic, settings, maps);
  map_rows(packed(frame, samples_), mosaic, settings, maps, 0, frame.height);
}

}  // namespace kv::polarization

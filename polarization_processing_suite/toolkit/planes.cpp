#include "toolkit/planes.h"

#include "toolkit/normalized_stokes.h"

namespace kv {

void Planes::make_room(const Frame& frame, OutputSet wanted) {
  width = frame.width;
  height = frame.height;
  const std::size_t pixels = frame.samples.size();
  const bool pairs_wanted = wanted.has(Plane::normalized_stokes);
  normalized_stokes.resize(pairs_wanted ? 2 * pixels : 0);
  packed_pairs.resize(pairs_wanted && packs_pairs(frame) ? 2 * pixels : 0);
  for (const PlaneTraits& traits : kPlanes) {
    const bool is_wanted = traits.element == PlaneElement::level && wanted.has(traits.plane);
    levels(traits.plane).resize(is_wanted ? pixels : 0);
  }
}

}  // namespace kv

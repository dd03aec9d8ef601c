// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/registered_files.h"

#include <algorithm>
#include <array>
#include <atomic>

#include "platform/files.h"

namespace kv::platform {
namespace {

enum State : int { is_free, in_work, is_filled };

/// A path that a signal handler can read: it lies in memory that is there from the start. Whoever
/// takes a place into work has it alone.
struct Place {
  std::atomic<int> state = is_free;
  std::array<std::filesystem::path::value_type, 4096> path;

  bool take(int from) noexcept { return state.compare_exchange_strong(from, in_work); }
};
static_assert(std::atomic<int>::is_always_lock_free);

/// More than the files of a frame for each thread of a large machine.
std::array<Place, 256> places;

}  // namespace

int register_file(const std::filesystem::path& path) noexcept {
  const auto& text = path.native();
  if (text.size() >= places[0].path.size()) return -1;
  for (std::size_t i = 0; i < places.size(); ++i) {
    Place& place = places[i];
    if (!place.take(is_free)) continue;
    *std::copy(text.begin(), text.end(), place.path.begin()) = 0;
    place.state = is_filled;
    return static_cast<int>(i);
  }
  return -1;
}

void unregister_file(int number) noexcept {
  if (number < 0) return;
  Place& place = places[static_cast<std::size_t>(number)];
  // Where that fails, a signal handler is at it.
  if (place.take(is_filled)) place.state = is_free;
}

void remove_registered_files() noexcept {
  for (Place& place : places) {
    if (place.take(is_filled)) remove_file(place.path.data());
  }
}

}  // namespace kv::platform

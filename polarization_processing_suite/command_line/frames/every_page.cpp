// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/frames/every_page.h"

#include <atomic>
#include <mutex>
#include <new>
#include <optional>
#include <utility>

#include "command_line/exit_status.h"
#include "command_line/messages.h"
#include "command_line/path_text.h"
#include "kv/polarization/fault.h"
#include "platform/process.h"
#include "toolkit/api/worker_pool.h"

namespace kv::polarization {
namespace {

/// Does the work and returns whether it succeeds; reports why not.
template <class Work>
bool attempt(const std::string& name, Work work) {
  try {
    work();
    return true;
  } catch (const Fault& fault) {
    complain(name + ": " + fault.what());
  } catch (const std::bad_alloc&) {
    complain(name +
             ": there is not enough memory for this frame; close other programs or use a smaller "
             "one");
  }
  return false;
}

/// Hands out the pages of all files, to one thread after the other.
class PageQueue {
 public:
  PageQueue(const std::vector<std::filesystem::path>& files, const FrameSettings& settings)
      : files_(files), settings_(settings) {}

  /// The next page; of a file that nobody has opened yet, with its reader. None behind the last.
  std::optional<PagePlace> next(std::unique_ptr<FrameReader>& reader) {
    const std::lock_guard lock(mutex_);
    if (platform::interrupted()) return std::nullopt;
    if (next_.page >= next_.pages) next_ = {.file = next_.file + 1};
    while (next_.page == 0 && next_.file < files_.size()) {
      const auto open = [&] {
        reader = open_frames_of_user(files_[next_.file], settings_.raw_shape);
        next_.pages = reader->count();
      };
      if (attempt(text_of(files_[next_.file]), open)) break;
      ++failures_;
      next_ = {.file = next_.file + 1};
    }
    if (next_.file >= files_.size()) return std::nullopt;
    PagePlace place = next_;
    ++next_.page;
    return place;
  }

  std::size_t failures() const { return failures_; }

 private:
  const std::vector<std::filesystem::path>& files_;
  const FrameSettings& settings_;
  std::mutex mutex_;
  PagePlace next_;
  std::size_t failures_ = 0;
};

}  // namespace

int PageCounts::exit_status() const {
  if (platform::interrupted()) return exit_interrupted;
  return failed == 0 ? exit_success : done == 0 ? exit_nothing_done : exit_some_failed;
}

std::string name_of(const std::filesystem::path& file, const PagePlace& place) {
  return text_of(file) + (place.pages > 1 ? ", page " + std::to_string(place.page + 1) : "");
}

void read_page(FrameReader& reader, std::size_t page, const FrameSettings& settings,
               const std::string& name, Frame& frame) {
  reader.read(page, frame);
  for (const std::string& note : reader.notes()) complain("warning: " + name + ": " + note);
  if (settings.bit_depth) frame.bit_depth = *settings.bit_depth;
  const std::size_t excess = count_samples_above_full_scale(frame);
  if (excess == 0) return;
  complain("warning: " + name + ": " + std::to_string(excess) + " samples are above " +
           std::to_string(full_scale(frame.bit_depth)) + ", the largest value of " +
           std::to_string(frame.bit_depth) + " bits; check --bit-depth");
}

PageCounts for_every_page(const std::vector<std::filesystem::path>& files,
                          const FrameSettings& settings,
                          const std::function<PageWork()>& make_work) {
  PageQueue queue(files, settings);
  std::atomic<std::size_t> done = 0;
  std::atomic<std::size_t> failed = 0;
  const auto work_through = [&](int) {
    const PageWork work = make_work();
    std::unique_ptr<FrameReader> reader;
    std::size_t open_file = files.size();
    Frame frame;
    std::unique_ptr<FrameReader> opened;
    while (const auto place = queue.next(opened)) {
      const auto& file = files[place->file];
      const std::string name = name_of(file, *place);
      const bool succeeded = attempt(name, [&] {
        if (opened) {
          reader = std::move(opened);
        } else if (open_file != place->file) {
          reader = open_frames_of_user(file, settings.raw_shape);
        }
        open_file = place->file;
        read_page(*reader, place->page, settings, name, frame);
        work(*place, frame);
      });
      ++(succeeded ? done : failed);
    }
  };
  WorkerPool pool(0);
  pool.run(pool.threads(), work_through);
  return {done, failed + queue.failures()};
}

}  // namespace kv::polarization

#include "command_line/transform/frame_output.h"

#include <algorithm>
#include <atomic>
#include <future>
#include <thread>
#include <utility>

namespace kv::polarization {

void FrameOutput::add(const std::filesystem::path& path, std::function<void(PendingFile&)> work) {
  files_.emplace_back(path);
  work_.push_back(std::move(work));
}

void FrameOutput::write() {
  std::atomic<std::size_t> next = 0;
  const auto write_next_files = [&] {
    for (std::size_t i = next++; i < files_.size(); i = next++) {
      work_[i](files_[i]);
      files_[i].close();
    }
  };
  const std::size_t cores = std::max(1u, std::thread::hardware_concurrency());
  std::vector<std::future<void>> writers;
  for (std::size_t i = 1; i < std::min(cores, files_.size()); ++i) {
    writers.push_back(std::async(std::launch::async, write_next_files));
  }
  // A future of std::async waits in its destructor: no writer outlives the files, even if this
  // thread's own writing throws.
  write_next_files();
  for (std::future<void>& writer : writers) writer.get();
  for (PendingFile& file : files_) file.publish();
}

}  // namespace kv::polarization

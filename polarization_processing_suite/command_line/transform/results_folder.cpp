// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/transform/results_folder.h"

#include <chrono>
#include <system_error>
#include <thread>

#include "kv/image_files/pending_file.h"
#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

void make_results_folder(const std::filesystem::path& folder) {
  std::error_code failure;
  std::filesystem::create_directories(folder, failure);
  if (!std::filesystem::is_directory(folder)) {
    const std::string why = failure ? failure.message() : "a file has this name";
    throw Fault(FaultKind::argument, "the output folder " + folder.string() + " cannot be made: " +
                                         why + "; choose another one with -o");
  }
}

}  // namespace

ResultsFolder::ResultsFolder(const std::filesystem::path& folder,
                             const std::vector<std::filesystem::path>& folders, Journal& journal)
    : folder_(folder), journal_(journal) {
  make_results_folder(folder);
  for (const auto& one : folders) make_results_folder(one);
  if (lock(platform::FileLock::Mode::exclusive)) {
    remove_stale_partials(folder);
    for (const auto& one : folders) remove_stale_partials(one);
  }
  // Another run may hold the folder alone for the moment that it tidies up.
  for (int attempt = 0; attempt < 100; ++attempt) {
    if (lock(platform::FileLock::Mode::shared)) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  throw Fault(FaultKind::file,
              "another run keeps the folder " + folder.string() + " to itself; wait for its end");
}

bool ResultsFolder::lock(platform::FileLock::Mode mode) {
  lock_.reset();
  std::error_code failure;
  lock_ = platform::FileLock::try_lock(folder_ / kJournalName, mode, failure);
  if (failure) {
    throw Fault(FaultKind::file, "the output folder " + folder_.string() +
                                     " cannot be written to: " + failure.message() +
                                     "; choose another one with -o");
  }
  return lock_.has_value();
}

void ResultsFolder::tidy() {
  const bool alone = lock(platform::FileLock::Mode::exclusive);
  // Windows replaces no file that is open. Should another run add a line in these milliseconds, its
  // input is done once more.
  lock_.reset();
  if (alone) journal_.tidy();
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/image_files/pending_file.h"

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "kv/polarization/buffer.h"
#include "kv/polarization/fault.h"
#include "platform/files.h"
#include "platform/registered_files.h"
#include "toolkit/image_files/partial_name.h"

namespace kv::polarization {
namespace {

[[noreturn]] void fail_to_write(const std::filesystem::path& target, const std::string& why) {
  throw Fault(FaultKind::file, "cannot write " + target.string() + ": " + why);
}

constexpr const char* kFolderAdvice = "choose a folder that you may write to, on a disk with space";

[[noreturn]] void fail_to_write(const std::filesystem::path& target, std::error_code reason,
                                const std::string& advice = kFolderAdvice) {
  const bool too_long = reason == std::errc::filename_too_long;
  fail_to_write(target, (reason ? reason.message() : "unknown reason") + "; " +
                            (too_long ? "choose a shorter name" : advice));
}

/// What a rename would fail for when all is written. It would take the place of a device, too.
void check_target(const std::filesystem::path& target) {
  std::error_code failure;
  switch (std::filesystem::status(target, failure).type()) {
    case std::filesystem::file_type::regular:
    case std::filesystem::file_type::not_found:
      return;
    case std::filesystem::file_type::directory:
      fail_to_write(target, "this is a folder; choose another name, or one in that folder");
    case std::filesystem::file_type::none:
      fail_to_write(target, failure);
    default:
      fail_to_write(target, "this is a device or pipe, which cannot be replaced; name a file");
  }
}

}  // namespace

PendingFile::PendingFile(std::filesystem::path target) : target_(std::move(target)) {
  check_target(target_);
  temporary_ = partial_beside(target_);
  errno = 0;
  stream_.reset(platform::open_for_writing(temporary_));
  if (!stream_) fail();
  registration_ = platform::register_file(temporary_);
}

PendingFile::PendingFile(std::filesystem::path target, Stream stream)
    : target_(std::move(target)), stream_(std::move(stream)) {
  if (!stream_) fail();
}

PendingFile PendingFile::standard_output() {
  errno = 0;
  return {"to the standard output", Stream(platform::open_nameless())};
}

PendingFile::~PendingFile() {
  stream_.reset();
  std::error_code ignored;
  if (has_place()) std::filesystem::remove(temporary_, ignored);
  platform::unregister_file(registration_);
}

void PendingFile::write(const void* data, std::size_t size) {
  errno = 0;
  if (std::fwrite(data, 1, size, stream_.get()) != size) fail();
}

void PendingFile::sync() {
  check_writes();
  errno = 0;
  if (has_place() && !platform::flush_to_disk(stream_.get())) fail();
}

void PendingFile::close() {
  check_writes();
  errno = 0;
  if (!has_place()) copy_to_standard_output();
  if (std::fclose(stream_.release()) != 0) fail();
}

/// Of image libraries; errno is that of the failed one.
void PendingFile::check_writes() const {
  if (std::ferror(stream_.get()) != 0) fail();
}

void PendingFile::copy_to_standard_output() {
  std::FILE* output = platform::binary_standard_output();
  Buffer<std::uint8_t> piece(std::size_t{1} << 20);
  if (platform::seek(stream_.get(), 0, SEEK_SET) != 0) fail();
  while (const std::size_t count = std::fread(piece.data(), 1, piece.size(), stream_.get())) {
    if (std::fwrite(piece.data(), 1, count, output) != count) fail();
  }
  if (std::ferror(stream_.get()) != 0 || std::fflush(output) != 0) fail();
}

void PendingFile::publish() {
  if (!has_place()) return;
  std::error_code failure;
  std::filesystem::rename(temporary_, target_, failure);
  if (failure) fail_to_write(target_, failure);
  end_as_published();
}

void PendingFile::publish_new() {
  if (!has_place()) return;
  const std::error_code failure = platform::rename_to_new(temporary_, target_);
  if (failure == std::errc::file_exists) {
    fail_to_write(target_, "there is a file of that name; remove it, or choose another name");
  }
  if (failure) fail_to_write(target_, failure);
  end_as_published();
}

void PendingFile::end_as_published() {
  temporary_.clear();
  platform::unregister_file(std::exchange(registration_, -1));
}

void PendingFile::fail() const {
  fail_to_write(target_, {errno, std::generic_category()},
                has_place() ? kFolderAdvice
                            : "its reader must take all of it, and the folder of temporary files "
                              "have room for it");
}

std::size_t remove_stale_partials(const std::filesystem::path& folder) {
  std::error_code failure;
  std::vector<std::filesystem::path> stale;
  for (std::filesystem::directory_iterator entry(folder, failure), end; !failure && entry != end;
       entry.increment(failure)) {
    std::error_code ignored;
    if (is_partial(entry->path().filename()) &&
        entry->symlink_status(ignored).type() == std::filesystem::file_type::regular) {
      stale.push_back(entry->path());
    }
  }
  std::size_t removed = 0;
  for (const std::filesystem::path& path : stale) {
    if (std::filesystem::remove(path, failure)) ++removed;
  }
  return removed;
}

}  // namespace kv::polarization

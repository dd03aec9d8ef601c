#include "kv/image_files/pending_file.h"

#include <array>
#include <cerrno>
#include <random>
#include <string>
#include <system_error>
#include <utility>

#include "kv/polarization/fault.h"
#include "platform/files.h"

namespace kv::polarization {
namespace {

/// A name that no other process picks. It is in the target's folder, as a rename is atomic only
/// there.
std::filesystem::path temporary_beside(const std::filesystem::path& target) {
  std::random_device entropy;
  std::filesystem::path name = target.filename();
  name += "." + std::to_string(entropy()) + ".partial";
  return target.parent_path() / name;
}

[[noreturn]] void fail_to_write(const std::filesystem::path& target, std::error_code reason) {
  const std::string why = reason ? reason.message() : "unknown reason";
  throw Fault(FaultKind::file, "cannot write " + target.string() + ": " + why +
                                   "; choose a folder that you may write to, on a disk with space");
}

}  // namespace

PendingFile::PendingFile(std::filesystem::path target)
    : target_(std::move(target)), temporary_(temporary_beside(target_)) {
  errno = 0;
  stream_.reset(platform::open_for_writing(temporary_));
  if (!stream_) fail();
}

PendingFile::~PendingFile() {
  stream_.reset();
  std::error_code ignored;
  if (!temporary_.empty()) std::filesystem::remove(temporary_, ignored);
}

void PendingFile::write(const void* data, std::size_t size) {
  errno = 0;
  if (std::fwrite(data, 1, size, stream_.get()) != size) fail();
}

void PendingFile::close() {
  std::FILE* stream = stream_.release();
  const bool failed_before = std::ferror(stream) != 0;
  if (!failed_before) errno = 0;
  const bool failed_now = std::fclose(stream) != 0;
  if (failed_before || failed_now) fail();
}

void PendingFile::publish() {
  std::error_code failure;
  std::filesystem::rename(temporary_, target_, failure);
  if (failure) fail_to_write(target_, failure);
  temporary_.clear();
}

void PendingFile::fail() const { fail_to_write(target_, {errno, std::generic_category()}); }

}  // namespace kv::polarization

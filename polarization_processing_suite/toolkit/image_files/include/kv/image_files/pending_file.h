// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <memory>

namespace kv::polarization {

/// A file that is being written, under a temporary name beside its target. The target is complete
/// at any moment: the old file until it is published, the new one afterwards. A file that is never
/// published is removed.
///
/// The temporary name is NAME.NUMBER.partial, or .kv.NUMBER.partial where NAME is too long for
/// that. One thread at a time uses a file.
class PendingFile {
 public:
  /// Throws Fault of kind file when the target's folder cannot be written to, or the target is
  /// there and is no ordinary file.
  explicit PendingFile(std::filesystem::path target);

  /// One that close() copies to the process's standard output, and that needs no publishing. Until
  /// then it is kept in the system's folder of temporary files, as formats need to go back in it.
  static PendingFile standard_output();

  ~PendingFile();
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;

  /// The name that publishing gives it.
  const std::filesystem::path& target() const { return target_; }

  /// For image libraries; null once the file is closed. A write through it that fails is reported
  /// by close().
  std::FILE* stream() { return stream_.get(); }

  /// Adds bytes. Throws Fault of kind file when the system does not take them.
  void write(const void* data, std::size_t size);

  /// Hands what was written to the disk, so that the file outlasts a loss of power after it is
  /// published. To be called before close(). Takes as long as the disk, from a millisecond up.
  void sync();

  /// Hands what was written to the operating system. Throws Fault when any write failed.
  void close();

  /// Gives the closed file its name. An earlier file of that name is replaced.
  void publish();

  /// Gives the closed file its name. Throws Fault of kind file when there is a file of that name.
  void publish_new();

  /// Throws the Fault of a failed write, with the operating system's reason.
  [[noreturn]] void fail() const;

 private:
  struct Close {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
  };
  using Stream = std::unique_ptr<std::FILE, Close>;

  PendingFile(std::filesystem::path target, Stream stream);
  bool has_place() const { return !temporary_.empty(); }
  void check_writes() const;
  void copy_to_standard_output();
  void end_as_published();

  std::filesystem::path target_;
  std::filesystem::path temporary_;  ///< empty once it is gone, and for the standard output
  Stream stream_;
  int registration_ = -1;  ///< for the end by a signal
};

/// Removes what runs that were killed have left in a folder: files that are named as PendingFile
/// names them. Returns how many. The caller sees to it that nobody is writing there. A file that
/// cannot be removed stays, and a folder that is missing has none.
std::size_t remove_stale_partials(const std::filesystem::path& folder);

}  // namespace kv::polarization

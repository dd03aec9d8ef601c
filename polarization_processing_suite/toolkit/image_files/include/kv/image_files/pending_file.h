#pragma once

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <memory>

namespace kv::polarization {

/// A file that is being written, under a temporary name beside its target. The target is complete
/// at any moment: the old file until publish(), the new one afterwards. A file that is never
/// published is removed.
class PendingFile {
 public:
  explicit PendingFile(std::filesystem::path target);
  ~PendingFile();
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;

  const std::filesystem::path& target() const { return target_; }

  /// For image libraries. A write through it that fails is reported by close().
  std::FILE* stream() { return stream_.get(); }

  void write(const void* data, std::size_t size);

  /// Hands what was written to the operating system. Throws Fault when any write failed.
  void close();

  /// Gives the closed file its name.
  void publish();

  /// Throws the Fault of a failed write, with the operating system's reason.
  [[noreturn]] void fail() const;

 private:
  struct Close {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
  };

  std::filesystem::path target_;
  std::filesystem::path temporary_;
  std::unique_ptr<std::FILE, Close> stream_;
};

}  // namespace kv::polarization

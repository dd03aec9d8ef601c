#pragma once

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <memory>

namespace kv {

/// A file in the making. It is written under a temporary name beside its target, so that the
/// target is whole at any moment: the old file until publish(), the new one afterwards. What was
/// not published is removed.
class PendingFile {
 public:
  explicit PendingFile(std::filesystem::path target);
  ~PendingFile();
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;

  const std::filesystem::path& target() const { return target_; }

  /// For image libraries. Whoever writes through it leaves faults to close().
  std::FILE* stream() { return stream_.get(); }

  void write(const void* data, std::size_t size);

  /// Hands everything to the operating system. Throws Error when any write failed.
  void close();

  /// Gives the closed file its name.
  void publish();

  /// Throws the Error of a failed write, with the operating system's reason.
  [[noreturn]] void fail() const;

 private:
  struct Close {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
  };

  std::filesystem::path target_;
  std::filesystem::path temporary_;
  std::unique_ptr<std::FILE, Close> stream_;
};

}  // namespace kv

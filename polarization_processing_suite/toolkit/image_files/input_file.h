#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>

namespace kv::polarization {

/// A file to read from, at any position.
class InputFile {
 public:
  /// Throws Fault when there is no such file, or it cannot be read.
  explicit InputFile(const std::filesystem::path& path);

  std::uint64_t size() const { return size_; }
  std::istream& stream() { return stream_; }

  /// Goes to a position in bytes, also after a read that met the end of the file.
  void seek(std::uint64_t position);

  /// Reads up to that many bytes; returns how many there were.
  std::size_t read(void* data, std::size_t size);

 private:
  std::ifstream stream_;
  std::uint64_t size_ = 0;
};

}  // namespace kv::polarization

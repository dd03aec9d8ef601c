#include "platform/files.h"

namespace kv::platform {

std::FILE* open_for_writing(const std::filesystem::path& path) {
  return std::fopen(path.c_str(), "w+b");
}

int seek(std::FILE* stream, std::int64_t offset, int whence) {
  return fseeko(stream, offset, whence);
}

std::int64_t position(std::FILE* stream) { return ftello(stream); }

}  // namespace kv::platform

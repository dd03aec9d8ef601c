#include "platform/files.h"

namespace kv::platform {

std::FILE* open_for_writing(const std::filesystem::path& path) {
  return _wfopen(path.c_str(), L"w+b");
}

int seek(std::FILE* stream, std::int64_t offset, int whence) {
  return _fseeki64(stream, offset, whence);
}

std::int64_t position(std::FILE* stream) { return _ftelli64(stream); }

}  // namespace kv::platform

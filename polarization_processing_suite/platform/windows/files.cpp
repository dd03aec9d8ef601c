#include "platform/files.h"

namespace kv::platform {

std::FILE* open_for_writing(const std::filesystem::path& path) {
  return _wfopen(path.c_str(), L"w+b");
}

}  // namespace kv::platform

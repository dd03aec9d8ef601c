#include "platform/files.h"

namespace kv::platform {

std::FILE* open_for_writing(const std::filesystem::path& path) {
  return std::fopen(path.c_str(), "w+b");
}

}  // namespace kv::platform

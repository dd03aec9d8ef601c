#pragma once

#include <filesystem>

namespace kv::test {

extern const char* const kLibrarySuffix;

/// A shared library, loaded by its full path for the length of a scope. Libraries that it asks for
/// by bare name are found in its own folder.
class SharedLibrary {
 public:
  explicit SharedLibrary(const std::filesystem::path& path);
  ~SharedLibrary();
  SharedLibrary(const SharedLibrary&) = delete;
  SharedLibrary& operator=(const SharedLibrary&) = delete;

  template <class Function>
  void find(const char* name, Function*& function) const {
    function = reinterpret_cast<Function*>(find(name));
  }

 private:
  void* find(const char* name) const;

  void* handle_;
};

/// Unloads a library that was left loaded, however often it was loaded.
void drop_library(const std::filesystem::path& path);

}  // namespace kv::test

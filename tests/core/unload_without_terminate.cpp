// Loads the library, initializes it and unloads it without a terminate. The unload step has to
// cover for the caller, and nothing may keep the library in the process.
#include <dlfcn.h>

#include <cstdint>
#include <cstdio>

namespace {

int fail(const char* what) {
  std::fprintf(stderr, "%s\n", what);
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return fail("usage: unload_without_terminate LIBRARY");
  void* const library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) return fail(dlerror());

  using Initialize = std::int32_t (*)();
  const auto initialize =
      reinterpret_cast<Initialize>(dlsym(library, "kv_polarization_processor_module_initialize"));
  if (initialize == nullptr) return fail(dlerror());
  if (initialize() != 0) return fail("initialize failed");

  if (dlclose(library) != 0) return fail(dlerror());
  if (dlopen(argv[1], RTLD_NOW | RTLD_NOLOAD) != nullptr)
    return fail("the library is still loaded");
  return 0;
}

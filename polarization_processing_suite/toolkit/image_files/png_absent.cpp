// Takes the place of png_file.cpp in builds without libpng.
#include "kv/polarization/fault.h"
#include "toolkit/image_files/png_file.h"

namespace kv::polarization {
namespace {

[[noreturn]] void refuse() {
  throw Fault(FaultKind::file, "this build has no PNG support; use PGM or headerless files");
}

}  // namespace

bool png_available() { return false; }
std::unique_ptr<FrameReader> open_png(InputFile) { refuse(); }
void write_png(PendingFile&, const GreyImage&) { refuse(); }
void write_png(PendingFile&, const Picture&) { refuse(); }

}  // namespace kv::polarization

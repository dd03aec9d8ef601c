// Takes the place of tiff_file.cpp in builds without libtiff.
#include "kv/polarization/fault.h"
#include "toolkit/image_files/tiff_file.h"

namespace kv::polarization {
namespace {

[[noreturn]] void refuse() {
  throw Fault(FaultKind::file, "this build has no TIFF support; use PGM or headerless files");
}

}  // namespace

bool tiff_available() { return false; }
std::unique_ptr<FrameReader> open_tiff(InputFile) { refuse(); }
void write_tiff(PendingFile&, const GreyImage&) { refuse(); }
void write_tiff(PendingFile&, int, int, std::span<const float>) { refuse(); }

}  // namespace kv::polarization

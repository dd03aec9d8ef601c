#pragma once

#include <png.h>

#include <csetjmp>
#include <string>

#include "kv/polarization/fault.h"

namespace kv::polarization {

/// For libpng's states: the reason goes into the string that the state was made with.
[[noreturn]] inline void keep_png_message(png_structp png, png_const_charp message) {
  *static_cast<std::string*>(png_get_error_ptr(png)) = message;
  png_longjmp(png, 1);
}

inline void ignore_png_warning(png_structp, png_const_charp) {}

inline void require_png_state(png_structp png, png_infop info) {
  if (png != nullptr && info != nullptr) return;
  throw Fault(FaultKind::memory, "there is no memory for libpng; close other programs");
}

/// Runs calls of libpng, which leaves them by longjmp when it fails. That skips destructors, so a
/// step must have no local variable with one.
template <class Step>
bool png_succeeds(png_structp png, Step step) {
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  step();
  return true;
}

/// libpng's own limit is a million pixels a side; ours are told in clear words.
inline void lift_png_limits(png_structp png) {
  png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
}

}  // namespace kv::polarization

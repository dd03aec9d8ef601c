#pragma once

#include <stdexcept>

namespace kv {

/// A fault that the user can correct. what() is one line: what is wrong, and what would be right.
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace kv

#pragma once

namespace kv::test {

/// Allocations of this program and of the libraries that it loads, less those given back.
long allocations_alive();

/// Lets the allocation after `successes` further ones fail, that one alone or all from there on,
/// for the length of a scope.
class ShortMemory {
 public:
  explicit ShortMemory(long successes, bool stays_short = false);
  ~ShortMemory() { end(); }
  ShortMemory(const ShortMemory&) = delete;
  ShortMemory& operator=(const ShortMemory&) = delete;

  static void end();
};

}  // namespace kv::test

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cfenv>

namespace kv::test {

struct RoundingMode {
  const char* name;
  int value;
};

inline constexpr std::array<RoundingMode, 4> kRoundingModes{{{"nearest", FE_TONEAREST},
                                                             {"down", FE_DOWNWARD},
                                                             {"up", FE_UPWARD},
                                                             {"towards zero", FE_TOWARDZERO}}};

/// The thread's rounding mode for the length of a scope.
class RoundingScope {
 public:
  explicit RoundingScope(int mode) : before_(std::fegetround()) { std::fesetround(mode); }
  ~RoundingScope() { std::fesetround(before_); }
  RoundingScope(const RoundingScope&) = delete;
  RoundingScope& operator=(const RoundingScope&) = delete;

 private:
  int before_;
};

}  // namespace kv::test

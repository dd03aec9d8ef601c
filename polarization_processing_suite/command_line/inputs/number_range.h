// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kv::polarization {

/// A name with ranges of numbers in it: frame_{0000..0999x10}.png stands for 100 names.
class RangedName {
 public:
  /// None when there is no range in the text. Throws Fault when one is too large, or has a step of
  /// 0.
  static std::optional<RangedName> in(const std::string& text);

  /// How many names there are, ten million at most.
  std::size_t count() const { return count_; }

  /// A name, of `count`. The last range varies fastest.
  std::string at(std::size_t index) const;

 private:
  /// What stands before a range, and its numbers.
  struct Part {
    std::string before;
    std::int64_t first;
    std::int64_t step;  // below 0 in a range that goes down
    std::size_t count;
    std::size_t width;  // in digits, with leading zeros
  };

  std::vector<Part> parts_;
  std::string end_;
  std::size_t count_ = 1;
};

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

#include "toolkit/api/memory_checks.h"

namespace kv::polarization {

template <class Value>
concept PlainValue = std::is_arithmetic_v<Value> || std::is_enum_v<Value>;

/// Puts values one after the other, without gaps, in the byte order of this machine.
class ByteWriter {
 public:
  template <PlainValue Value>
  void operator()(const Value& value) {
    const auto bytes = std::as_bytes(std::span(&value, 1));
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
  }
  void operator()(bool value) { (*this)(static_cast<std::uint8_t>(value)); }
  void operator()(const std::string& text) { blob(std::as_bytes(std::span(text))); }
  template <class Value, std::size_t count>
  void operator()(const std::array<Value, count>& values) {
    for (const Value& value : values) (*this)(value);
  }
  template <class Value>
  void operator()(const std::optional<Value>& value) {
    (*this)(value.has_value());
    if (value) (*this)(*value);
  }
  void blob(std::span<const std::byte> bytes) {
    (*this)(std::uint64_t{bytes.size()});
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
  }

  std::vector<std::byte>& bytes() { return bytes_; }

 private:
  std::vector<std::byte> bytes_;
};

/// Takes the same values out again. Believes nothing: throws Fault of kind argument at whatever
/// cannot be. Values of enumerations without a fixed type are for its user to check.
class ByteReader {
 public:
  /// `what` is what the bytes should be, for faults: "a plan".
  ByteReader(std::span<const std::byte> bytes, std::string what)
      : left_(bytes), what_(std::move(what)) {}

  template <PlainValue Value>
  void operator()(Value& value) {
    const auto bytes = take(sizeof value);
    std::memcpy(&value, bytes.data(), bytes.size());
  }
  void operator()(bool& value) {
    std::uint8_t byte = 0;
    (*this)(byte);
    if (byte > 1) fail("they are damaged");
    value = byte == 1;
  }
  void operator()(std::string& text) {
    const auto bytes = blob();
    text.resize(bytes.size());
    if (!bytes.empty()) std::memcpy(text.data(), bytes.data(), bytes.size());
  }
  template <class Value, std::size_t count>
  void operator()(std::array<Value, count>& values) {
    for (Value& value : values) (*this)(value);
  }
  template <class Value>
  void operator()(std::optional<Value>& value) {
    bool has_value = false;
    (*this)(has_value);
    value.reset();
    if (has_value) (*this)(value.emplace());
  }
  std::span<const std::byte> blob() {
    std::uint64_t size = 0;
    (*this)(size);
    return take(size);
  }
  std::span<const std::byte> take(std::uint64_t size) {
    if (size > left_.size()) fail("they end too early");
    const auto bytes = left_.first(static_cast<std::size_t>(size));
    left_ = left_.subspan(bytes.size());
    return bytes;
  }

  std::size_t left() const { return left_.size(); }
  void require_end() const {
    if (!left_.empty()) fail("there are more than it has");
  }
  void require(bool can_be) const {
    if (!can_be) fail("they are damaged");
  }
  [[noreturn]] void fail(const std::string& why) const {
    refuse("the bytes are not those of " + what_ + ": " + why +
           "; all that were written must come, unchanged");
  }

 private:
  std::span<const std::byte> left_;
  std::string what_;
};

/// What bytes of one kind begin with.
struct ByteHead {
  std::array<char, 8> magic;
  std::uint32_t version;
};

// Reads otherwise on a machine of another byte order.
inline constexpr std::uint32_t kOrderMark = 0x01020304;

inline void put_head(ByteWriter& bytes, const ByteHead& head) {
  bytes(head.magic);
  bytes(kOrderMark);
  bytes(head.version);
}

inline void check_head(ByteReader& bytes, const ByteHead& head) {
  ByteHead found{};
  std::uint32_t order = 0;
  bytes(found.magic);
  if (found.magic != head.magic) bytes.fail("they begin otherwise");
  bytes(order);
  if (order != kOrderMark) bytes.fail("they come from a machine of another byte order");
  bytes(found.version);
  if (found.version != head.version) {
    bytes.fail("they are of version " + std::to_string(found.version) + ", not " +
               std::to_string(head.version));
  }
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/formats/npy_header.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>

#include "kv/polarization/fault.h"
#include "toolkit/api/shown_text.h"
#include "toolkit/image_files/stored_samples.h"

namespace kv::polarization {
namespace {

/// Far above what a header of one plain array takes.
constexpr std::uint32_t kMostHeader = 65535;

[[noreturn]] void refuse_as_damaged(const std::string& why) {
  throw Fault(FaultKind::file, "the NPY header is damaged: " + why + "; an intact one is needed");
}

/// Reads the one Python dictionary that a header is.
class Dictionary {
 public:
  explicit Dictionary(std::string_view text) : rest_(text) {}

  NpyHeader read() {
    NpyHeader header;
    int keys = 0;
    expect('{');
    while (!accept('}')) {
      const std::string key = quoted();
      expect(':');
      if (key == "descr") {
        // What follows a bracket are the fields of a record.
        header.type = next() == '[' ? "record" : quoted();
        if (header.type == "record") return header;
      } else if (key == "fortran_order") {
        header.columns_first = truth();
      } else if (key == "shape") {
        header.shape = tuple();
      } else {
        refuse_as_damaged("'" + shown(key) + "' is no key of it");
      }
      ++keys;
      if (!accept(',') && next() != '}') refuse_as_damaged("a comma is missing");
    }
    if (keys != 3) refuse_as_damaged("it does not have the three keys descr, fortran_order, shape");
    return header;
  }

 private:
  char next() {
    while (!rest_.empty() && std::isspace(static_cast<unsigned char>(rest_[0]))) {
      rest_.remove_prefix(1);
    }
    if (rest_.empty()) refuse_as_damaged("it ends within its text");
    return rest_[0];
  }

  bool accept(char wanted) {
    if (next() != wanted) return false;
    rest_.remove_prefix(1);
    return true;
  }

  void expect(char wanted) {
    if (!accept(wanted)) refuse_as_damaged(std::string("'") + wanted + "' is missing");
  }

  std::string quoted() {
    const char quote = next();
    const std::size_t end = rest_.find(quote, 1);
    if ((quote != '\'' && quote != '"') || end == std::string_view::npos) {
      refuse_as_damaged("a text in quotes is missing");
    }
    std::string text(rest_.substr(1, end - 1));
    rest_.remove_prefix(end + 1);
    return text;
  }

  bool truth() {
    next();
    for (const std::string_view word : {"True", "False"}) {
      if (!rest_.starts_with(word)) continue;
      rest_.remove_prefix(word.size());
      return word == "True";
    }
    refuse_as_damaged("fortran_order is neither True nor False");
  }

  std::vector<std::uint64_t> tuple() {
    std::vector<std::uint64_t> numbers;
    expect('(');
    while (!accept(')')) {
      next();
      std::uint64_t number = 0;
      const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), number);
      if (error != std::errc()) refuse_as_damaged("its shape is not made of numbers");
      rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
      numbers.push_back(number);
      if (!accept(',') && next() != ')') refuse_as_damaged("a comma is missing in its shape");
    }
    return numbers;
  }

  std::string_view rest_;
};

std::string little_endian(std::size_t value, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> 8 * i & 0xFF);
  return text;
}

}  // namespace

NpyHeader read_npy_header(ByteSource& source) {
  std::array<std::uint8_t, 12> start{};
  const std::size_t available = source.read(0, start.data(), start.size());
  const int version = start[6];
  if (available == start.size() && (version < 1 || version > 3)) {
    throw Fault(FaultKind::unsupported, "the NPY file is of version " + std::to_string(version) +
                                            "; versions 1 to 3 are read");
  }
  // Its text begins behind the 6 bytes of the signature, 2 of the version, and 2 or 4 of its size.
  const std::uint64_t text_start = version == 1 ? 10 : 12;
  std::uint32_t size = start[8] + 256u * start[9];
  if (version != 1) size += (start[10] + 256u * start[11]) << 16;
  if (available < start.size() || size > source.size() - text_start) {
    refuse_as_damaged("the file ends within it");
  }
  if (size > kMostHeader) {
    refuse_as_damaged("it claims " + std::to_string(size) + " bytes, more than any array's");
  }
  std::string text(size, '\0');
  read_exactly(source, text_start, text.data(), size);
  NpyHeader header = Dictionary(text).read();
  header.first_byte = text_start + size;
  return header;
}

std::string npy_header(std::string_view type, const std::vector<std::size_t>& shape) {
  std::string sides;
  for (const std::size_t side : shape) sides += (sides.empty() ? "" : ", ") + std::to_string(side);
  std::string text =
      "{'descr': '" + std::string(type) + "', 'fortran_order': False, 'shape': (" + sides + "), }";
  const std::size_t end = 10 + text.size() + 1;
  text.append((64 - end % 64) % 64, ' ');
  text += '\n';
  return "\x93NUMPY\x01" + std::string(1, '\0') + little_endian(text.size(), 2) + text;
}

}  // namespace kv::polarization

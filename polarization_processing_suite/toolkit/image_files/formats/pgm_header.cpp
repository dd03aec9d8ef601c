// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/formats/pgm_header.h"

#include <bit>
#include <cctype>
#include <limits>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/format_table.h"

namespace kv::polarization {
namespace {

/// Reads a header from its start on, byte by byte.
class HeaderCursor {
 public:
  HeaderCursor(ByteSource& source, std::uint64_t position) : source_(source), position_(position) {}

  std::uint64_t position() const { return position_; }

  /// -1 at the end of the file.
  int next() {
    unsigned char byte = 0;
    if (source_.read(position_, &byte, 1) == 0) return -1;
    ++position_;
    return byte;
  }

  /// As next(), which then gives it once more.
  int peek() {
    const int byte = next();
    if (byte != -1) --position_;
    return byte;
  }

  /// What is left of a line, without its end.
  std::string line() {
    std::string text;
    for (int byte = next(); byte != '\n' && byte != -1 && text.size() < kMostText; byte = next()) {
      text += static_cast<char>(byte);
    }
    return text;
  }

  /// After white space and comments, which run from # to the line's end.
  std::uint64_t number() {
    int byte = next();
    while (std::isspace(byte) || byte == '#') {
      if (byte == '#') {
        while (byte != '\n' && byte != -1) byte = next();
      }
      byte = next();
    }
    if (!std::isdigit(byte)) {
      throw Fault(FaultKind::file,
                  "the PGM header is damaged; P5, width, height and maxval are needed");
    }
    std::uint64_t number = 0;
    for (; std::isdigit(byte); byte = next()) {
      number = number * 10 + static_cast<std::uint64_t>(byte - '0');
      if (number > std::numeric_limits<std::uint32_t>::max()) {
        throw Fault(FaultKind::file,
                    "a number in the PGM header is too large; the largest allowed is 4294967295");
      }
    }
    if (byte != -1) --position_;
    return number;
  }

 private:
  ByteSource& source_;
  std::uint64_t position_;
};

PgmImage read_header(ByteSource& source, std::uint64_t position, bool colour_too) {
  HeaderCursor cursor(source, position);
  const bool is_netpbm = cursor.next() == 'P';
  const int kind = cursor.next();
  if (!is_netpbm || (kind != '5' && !(kind == '6' && colour_too))) {
    throw Fault(FaultKind::file, "other data follows a PGM image; only further " +
                                     std::string(colour_too ? "P5 and P6" : "P5") +
                                     " images may follow");
  }
  PgmImage image;
  image.channels = kind == '6' ? 3 : 1;
  image.width = cursor.number();
  image.height = cursor.number();
  if (image.width == 0 || image.height == 0) {
    throw Fault(FaultKind::file,
                "the PGM header gives a width or height of 0; both must be 1 or more");
  }
  const std::uint64_t maxval = cursor.number();
  if (maxval < 1 || maxval > 65535) {
    throw Fault(FaultKind::file,
                "the PGM maxval is " + std::to_string(maxval) + "; it must be from 1 to 65535");
  }
  image.bit_depth = static_cast<int>(std::bit_width(maxval));
  if (cursor.next() == -1) {  // the one white space between maxval and samples
    throw Fault(FaultKind::file, "the PGM file ends within its header; its samples are missing");
  }
  image.first_byte = cursor.position();
  const std::uint64_t available = source.size() - image.first_byte;
  if (image.width > available / image.pixel_size() / image.height) {
    throw Fault(FaultKind::file, "the PGM file is truncated: " + std::to_string(image.width) +
                                     " x " + std::to_string(image.height) +
                                     " pixels are announced, but only " +
                                     std::to_string(available) + " bytes follow");
  }
  return image;
}

}  // namespace

std::vector<PgmImage> read_pgm_headers(ByteSource& source, bool colour_too) {
  std::vector<PgmImage> images;
  for (std::uint64_t position = 0; position < source.size();) {
    images.push_back(read_header(source, position, colour_too));
    position = images.back().first_byte + images.back().size();
  }
  return images;
}

std::optional<std::string> pgm_provenance(ByteSource& source) {
  HeaderCursor cursor(source, 2);
  for (cursor.next(); cursor.peek() == '#';) {
    const std::string line = cursor.line();
    if (line.starts_with(kPgmProvenance)) return line.substr(kPgmProvenance.size());
  }
  return std::nullopt;
}

}  // namespace kv::polarization

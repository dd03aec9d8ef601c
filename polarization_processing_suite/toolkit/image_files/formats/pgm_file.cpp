// Binary grey netpbm images (P5), one or several in a row. The bit depth is that of the maxval.
#include <algorithm>
#include <bit>
#include <cctype>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/concatenated_stack.h"
#include "toolkit/image_files/formats/formats.h"
#include "toolkit/image_files/stored_samples.h"

namespace kv::polarization {
namespace {

struct PgmImage {
  std::uint64_t width = 0;
  std::uint64_t height = 0;
  int bit_depth = 0;
  std::uint64_t first_byte = 0;

  std::uint64_t size() const { return width * height * bytes_a_sample(bit_depth); }
};

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

PgmImage read_header(ByteSource& source, std::uint64_t position) {
  HeaderCursor cursor(source, position);
  if (cursor.next() != 'P' || cursor.next() != '5') {
    throw Fault(FaultKind::file,
                "other data follows a PGM image; only further P5 images may follow");
  }
  PgmImage image;
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
  if (image.width > available / bytes_a_sample(image.bit_depth) / image.height) {
    throw Fault(FaultKind::file, "the PGM file is truncated: " + std::to_string(image.width) +
                                     " x " + std::to_string(image.height) +
                                     " pixels are announced, but only " +
                                     std::to_string(available) + " bytes follow");
  }
  return image;
}

class PgmReader : public FrameReader {
 public:
  explicit PgmReader(SourcePointer source) : source_(std::move(source)) {
    for (std::uint64_t position = 0; position < source_->size();) {
      images_.push_back(read_header(*source_, position));
      position = images_.back().first_byte + images_.back().size();
    }
  }

  std::size_t count() const override { return images_.size(); }

 private:
  void load(std::size_t index, Frame& frame) override {
    const PgmImage& image = images_[index];
    reshape(frame, {"PGM", image.width, image.height, image.bit_depth}, image.size());
    read_samples(*source_, image.first_byte, bytes_a_sample(image.bit_depth), std::endian::big,
                 frame, room_);
  }

  SourcePointer source_;
  std::vector<PgmImage> images_;
  Buffer<std::uint8_t> room_;
};

std::unique_ptr<FrameReader> open(SourcePointer source) {
  return std::make_unique<PgmReader>(std::move(source));
}

/// A line, which ends no earlier than the text; empty for an empty one.
std::string comment(std::string_view start, std::string text) {
  if (text.empty()) return text;
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
  return std::string(start) + text + '\n';
}

constexpr std::string_view kProvenance = "# provenance ";

/// Of the comments that follow the file's first line.
std::optional<std::string> provenance(ByteSource& source) {
  HeaderCursor cursor(source, 2);
  for (cursor.next(); cursor.peek() == '#';) {
    const std::string line = cursor.line();
    if (line.starts_with(kProvenance)) return line.substr(kProvenance.size());
  }
  return std::nullopt;
}

void write_header(PendingFile& file, const char* kind, int width, int height, int maxval,
                  const WriteOptions& options) {
  const std::string header = std::string(kind) + "\n" + comment(kProvenance, options.provenance) +
                             comment("# ", options.title) + std::to_string(width) + " " +
                             std::to_string(height) + "\n" + std::to_string(maxval) + "\n";
  file.write(header.data(), header.size());
}

void write_grey(PendingFile& file, const GreyImage& image, const WriteOptions& options) {
  write_header(file, "P5", image.width, image.height, full_scale(image.bit_depth), options);
  write_samples(file, image.samples, bytes_a_sample(image.bit_depth), std::endian::big);
}

void write_picture(PendingFile& file, const Picture& picture, const WriteOptions& options) {
  write_header(file, picture.channels == 1 ? "P5" : "P6", picture.width, picture.height, 255,
               options);
  file.write(picture.bytes.data(), picture.bytes.size());
}

}  // namespace

FormatFunctions pgm_functions() {
  return {.open = open,
          .write_grey = write_grey,
          .write_picture = write_picture,
          .open_stack = open_concatenated<ImageFormat::pgm>,
          .provenance = provenance};
}

}  // namespace kv::polarization

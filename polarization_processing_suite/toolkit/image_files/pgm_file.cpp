#include "toolkit/image_files/pgm_file.h"

#include <bit>
#include <cctype>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/sample_bytes.h"

namespace kv::polarization {
namespace {

struct PgmImage {
  std::uint64_t width = 0;
  std::uint64_t height = 0;
  int bit_depth = 0;
  std::uint64_t first_byte = 0;

  std::uint64_t size() const { return width * height * (bit_depth > 8 ? 2 : 1); }
};

/// The next number of a header, after white space and comments, which run from # to the line's end.
std::uint64_t header_number(std::istream& stream) {
  int next = stream.get();
  while (std::isspace(next) || next == '#') {
    if (next == '#') stream.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    next = stream.get();
  }
  if (!std::isdigit(next)) {
    throw Fault(FaultKind::file,
                "the PGM header is damaged; P5, width, height and maxval are needed");
  }
  std::uint64_t number = 0;
  for (; std::isdigit(next); next = stream.get()) {
    number = number * 10 + static_cast<std::uint64_t>(next - '0');
    if (number > std::numeric_limits<std::uint32_t>::max()) {
      throw Fault(FaultKind::file,
                  "a number in the PGM header is too large; the largest allowed is 4294967295");
    }
  }
  stream.unget();
  return number;
}

PgmImage read_header(InputFile& file, std::uint64_t position) {
  file.seek(position);
  std::istream& stream = file.stream();
  if (stream.get() != 'P' || stream.get() != '5') {
    throw Fault(FaultKind::file,
                "other data follows a PGM image; only further P5 images may follow");
  }
  PgmImage image;
  image.width = header_number(stream);
  image.height = header_number(stream);
  if (image.width == 0 || image.height == 0) {
    throw Fault(FaultKind::file,
                "the PGM header gives a width or height of 0; both must be 1 or more");
  }
  const std::uint64_t maxval = header_number(stream);
  if (maxval < 1 || maxval > 65535) {
    throw Fault(FaultKind::file,
                "the PGM maxval is " + std::to_string(maxval) + "; it must be from 1 to 65535");
  }
  image.bit_depth = static_cast<int>(std::bit_width(maxval));
  stream.get();  // the one white space between maxval and samples
  if (!stream)
    throw Fault(FaultKind::file, "the PGM file ends within its header; its samples are missing");
  image.first_byte = static_cast<std::uint64_t>(stream.tellg());

  const std::uint64_t available = file.size() - image.first_byte;
  if (image.width > available || image.height > available || image.size() > available) {
    throw Fault(FaultKind::file, "the PGM file is truncated: " + std::to_string(image.width) +
                                     " x " + std::to_string(image.height) +
                                     " pixels are announced, but only " +
                                     std::to_string(available) + " bytes follow");
  }
  return image;
}

class PgmReader : public FrameReader {
 public:
  explicit PgmReader(InputFile file) : file_(std::move(file)) {
    for (std::uint64_t position = 0; position < file_.size();) {
      const PgmImage image = read_header(file_, position);
      images_.push_back(image);
      position = image.first_byte + image.size();
    }
  }

  std::size_t count() const override { return images_.size(); }

  Frame read(std::size_t index) override {
    const PgmImage& image = images_[index];
    Frame frame = make_frame(image.width, image.height, image.bit_depth);
    std::vector<std::uint8_t> bytes(image.size());
    file_.seek(image.first_byte);
    if (file_.read(bytes.data(), bytes.size()) != bytes.size()) {
      throw Fault(FaultKind::file,
                  "the PGM file cannot be read to its end; copy it again from its source");
    }
    samples_from_bytes(bytes, image.bit_depth, ByteOrder::big, frame.samples);
    return frame;
  }

 private:
  InputFile file_;
  std::vector<PgmImage> images_;
};

void write_header(PendingFile& file, const char* kind, int width, int height, int maxval) {
  const std::string header = std::string(kind) + "\n" + std::to_string(width) + " " +
                             std::to_string(height) + "\n" + std::to_string(maxval) + "\n";
  file.write(header.data(), header.size());
}

}  // namespace

std::unique_ptr<FrameReader> open_pgm(InputFile file) {
  return std::make_unique<PgmReader>(std::move(file));
}

void write_pgm(PendingFile& file, const GreyImage& image) {
  write_header(file, "P5", image.width, image.height, full_scale(image.bit_depth));
  const auto bytes = bytes_from_samples(image.samples, image.bit_depth, ByteOrder::big);
  file.write(bytes.data(), bytes.size());
}

void write_netpbm(PendingFile& file, const Picture& picture) {
  write_header(file, picture.channels == 1 ? "P5" : "P6", picture.width, picture.height, 255);
  file.write(picture.bytes.data(), picture.bytes.size());
}

}  // namespace kv::polarization

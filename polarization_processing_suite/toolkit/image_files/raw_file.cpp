#include "toolkit/image_files/raw_file.h"

#include <string>
#include <utility>
#include <vector>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/sample_bytes.h"

namespace kv::polarization {
namespace {

class RawReader : public FrameReader {
 public:
  RawReader(InputFile file, const RawShape& shape) : file_(std::move(file)), shape_(shape) {
    frame_size_ = pixel_count(shape.width, shape.height) * static_cast<std::size_t>(shape.bits / 8);
    if (file_.size() % frame_size_ != 0) {
      throw Fault(FaultKind::file, "the file has " + std::to_string(file_.size()) +
                                       " bytes; whole frames of " + std::to_string(shape.width) +
                                       " x " + std::to_string(shape.height) + " with " +
                                       std::to_string(shape.bits) + " bits need a multiple of " +
                                       std::to_string(frame_size_));
    }
  }

  std::size_t count() const override { return file_.size() / frame_size_; }

  Frame read(std::size_t index) override {
    Frame frame = make_frame(static_cast<std::uint64_t>(shape_.width),
                             static_cast<std::uint64_t>(shape_.height), shape_.bits);
    std::vector<std::uint8_t> bytes(frame_size_);
    file_.seek(index * frame_size_);
    if (file_.read(bytes.data(), bytes.size()) != bytes.size()) {
      throw Fault(FaultKind::file, "the file ends within the frame; copy it again from its source");
    }
    samples_from_bytes(bytes, shape_.bits, ByteOrder::little, frame.samples);
    return frame;
  }

 private:
  InputFile file_;
  RawShape shape_;
  std::size_t frame_size_ = 0;
};

}  // namespace

std::unique_ptr<FrameReader> open_raw(InputFile file, const RawShape& shape) {
  return std::make_unique<RawReader>(std::move(file), shape);
}

void write_raw(PendingFile& file, const GreyImage& image) {
  const auto bytes = bytes_from_samples(image.samples, image.bit_depth, ByteOrder::little);
  file.write(bytes.data(), bytes.size());
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Frames out of their packing, and to and from files that the system keeps in memory.
//
//   file_benchmarks --benchmark_filter=unpack
//   file_benchmarks --benchmark_filter=png plane.pgm     that plane in the place of noise

#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>
#include <vector>

#include "kv/image_files.h"
#include "libpng_baseline.h"

namespace {

using namespace kv::polarization;

constexpr int kWidth = 2448;
constexpr int kHeight = 2048;
constexpr std::size_t kPixels = pixel_count(kWidth, kHeight);

void count_pixels(benchmark::State& state, std::size_t pixels = kPixels) {
  state.counters["pixels/s"] =
      benchmark::Counter(static_cast<double>(pixels) * static_cast<double>(state.iterations()),
                         benchmark::Counter::kIsRate);
}

/// A ring of frames is more than any cache holds; a single one stays in the largest.
void unpack_frames(benchmark::State& state, PixelFormat format, std::size_t frames) {
  std::vector<Buffer<std::uint8_t>> stored(frames);
  std::vector<Buffer<std::uint16_t>> samples(frames);
  for (std::size_t i = 0; i < frames; ++i) {
    stored[i].resize(stored_bytes(format, kPixels));
    std::fill(stored[i].begin(), stored[i].end(), std::uint8_t{0x5A});
    samples[i].resize(kPixels);
    std::fill(samples[i].begin(), samples[i].end(), std::uint16_t{0});
  }
  std::size_t next = 0;
  for (auto _ : state) {
    unpack(std::as_bytes(std::span(stored[next])), format, samples[next]);
    benchmark::ClobberMemory();
    next = (next + 1) % frames;
  }
  count_pixels(state);
}

/// Noise in the low 6 of 12 bits.
Frame noisy_frame() {
  Frame frame = make_frame(kWidth, kHeight, 12);
  std::uint32_t noise = 1;
  for (std::uint16_t& sample : frame.samples) {
    noise = noise * 1664525 + 1013904223;
    sample = static_cast<std::uint16_t>(2048 + (noise >> 26));
  }
  return frame;
}

/// What is written and read.
Frame& image() {
  static Frame frame = noisy_frame();
  return frame;
}

/// An image in a file of its own, which goes with it.
struct Encoding {
  ImageFormat format;
  std::optional<Compression> compression{};
  bool by_libpng = false;

  std::filesystem::path path() const {
    return std::filesystem::temp_directory_path() /
           ("file_benchmarks" + std::string(ending_of(format)));
  }
  void write() const {
    by_libpng ? libpng_baseline::write(path(), grey_image(image()))
              : save_image(path(), grey_image(image()), {.compression = compression});
  }
  void read(Frame& frame) const {
    std::optional<RawShape> shape;
    if (format == ImageFormat::raw) {
      shape = RawShape{image().width, image().height, PixelFormat::mono16};
    }
    by_libpng ? libpng_baseline::read(path(), frame) : open_frames(path(), shape)->read(0, frame);
  }
};

/// Calls a function that writes or reads the file, and tells the file's share of the pixels' bytes.
template <class Function>
void measure(benchmark::State& state, const Encoding& encoding, Function function) {
  for (auto _ : state) function();
  const std::size_t pixels = image().samples.size();
  count_pixels(state, pixels);
  state.counters["% of 16 bits"] =
      100 * static_cast<double>(std::filesystem::file_size(encoding.path())) /
      static_cast<double>(sizeof(std::uint16_t) * pixels);
  std::filesystem::remove(encoding.path());
}

void write_frame(benchmark::State& state, Encoding encoding) {
  measure(state, encoding, [&] { encoding.write(); });
}

void read_frame(benchmark::State& state, Encoding encoding) {
  encoding.write();
  Frame frame = image();
  measure(state, encoding, [&] { encoding.read(frame); });
}

void register_encoding(const std::string& name, const Encoding& encoding) {
  benchmark::RegisterBenchmark(("write/" + name).c_str(), write_frame, encoding)
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark(("read/" + name).c_str(), read_frame, encoding)
      ->Unit(benchmark::kMillisecond);
}

void register_encodings(const ImageFormatTraits& format) {
  const std::string name(format.name);
  if (format.format != ImageFormat::png && format.format != ImageFormat::tiff) {
    return register_encoding(name, {format.format});
  }
  register_encoding(name + "/none", {format.format, Compression::none});
  register_encoding(name + "/fast", {format.format, Compression::fast});
  register_encoding(name + "/small", {format.format, Compression::small});
  if (format.format == ImageFormat::png && libpng_baseline::is_available()) {
    register_encoding(name + "/libpng", {.format = format.format, .by_libpng = true});
  }
}

}  // namespace

int main(int argc, char** argv) {
  for (const PixelFormatTraits& format : kPixelFormats) {
    for (const std::size_t frames : {std::size_t{1}, std::size_t{8}}) {
      const std::string name =
          "unpack/" + std::string(format.name) + (frames == 1 ? "/warm" : "/ring");
      benchmark::RegisterBenchmark(name.c_str(), unpack_frames, format.format, frames)
          ->Unit(benchmark::kMillisecond);
    }
  }
  for (const ImageFormatTraits& format : image_formats()) {
    if (format.available()) register_encodings(format);
  }
  benchmark::Initialize(&argc, argv);
  if (argc == 2) {
    image() = open_frames(argv[1])->read(0);
    --argc;
  }
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}

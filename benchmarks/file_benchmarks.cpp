// Frames out of their packing, and to and from files that the system keeps in memory.
//
//   file_benchmarks --benchmark_filter=unpack

#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>
#include <vector>

#include "kv/image_files.h"

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

std::filesystem::path file_of(ImageFormat format) {
  return std::filesystem::temp_directory_path() /
         ("file_benchmarks" + std::string(ending_of(format)));
}

void write_frame(benchmark::State& state, ImageFormat format) {
  const Frame frame = noisy_frame();
  for (auto _ : state) save_image(file_of(format), grey_image(frame));
  count_pixels(state);
  std::filesystem::remove(file_of(format));
}

void read_frame(benchmark::State& state, ImageFormat format) {
  save_image(file_of(format), grey_image(noisy_frame()));
  std::optional<RawShape> shape;
  if (format == ImageFormat::raw) shape = RawShape{kWidth, kHeight, PixelFormat::mono16};
  Frame frame;
  for (auto _ : state) open_frames(file_of(format), shape)->read(0, frame);
  count_pixels(state);
  std::filesystem::remove(file_of(format));
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
    if (!format.available()) continue;
    const std::string name(format.name);
    benchmark::RegisterBenchmark(("write/" + name).c_str(), write_frame, format.format)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("read/" + name).c_str(), read_frame, format.format)
        ->Unit(benchmark::kMillisecond);
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}

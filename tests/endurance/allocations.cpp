// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// The toolkit's ways, each in a process of its own with allocation number n failing for n = 1, 2,
// ... until a run ends without a failure. Out may come std::bad_alloc or a Fault and nothing else;
// what is left under a final name is complete; nothing stays open or allocated; and the next run
// gives the right result.
//
//   endurance_allocations FOLDER STRIDE
//
// The folder is emptied. Every STRIDE-th n is taken.
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <map>
#include <new>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "failing_memory.h"
#include "kv/calibration/calibration_file.h"
#include "kv/calibration/calibration_fit.h"
#include "kv/calibration/frame_corrector.h"
#include "kv/calibration/identify.h"
#include "kv/calibration/report.h"
#include "kv/image_files.h"
#include "kv/pictures.h"
#include "kv/polarization.h"
#include "process_figures.h"

using namespace kv::polarization;

namespace {

constexpr int kWidth = 24;
constexpr int kHeight = 16;
constexpr SensorNoise kNoise{.gain = 0.4F, .read_noise = 2.5F};

/// Of a light that turns with the number.
Frame made_up_frame(std::uint32_t number, FrameKind kind = FrameKind::polarized) {
  std::mt19937 random(number + 1);
  Frame frame = make_frame(kWidth, kHeight, 12);
  for (std::size_t i = 0; i < frame.samples.size(); ++i) {
    const std::size_t place = i / kWidth % 2 * 2 + i % 2;
    const double angle = cell_angles(kv_polar_phase_0)[place] - 30.0 * number;
    const double light = kind == FrameKind::dark ? 0
                         : kind == FrameKind::flat
                             ? 1200
                             : 1200 * (1 + std::cos(2 * angle * 3.14159265 / 180));
    frame.samples[i] = static_cast<std::uint16_t>(64 + light + static_cast<double>(random() % 16));
  }
  return frame;
}

template <class Element>
std::string bytes_of_span(std::span<const Element> elements) {
  const auto bytes = std::as_bytes(elements);
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// What a way computed; its files come to it.
using Way = std::function<std::string(const std::filesystem::path& folder)>;

std::string transform(const std::filesystem::path&) {
  const Frame frame = made_up_frame(0);
  Planes planes;
  planes.reshape(kWidth, kHeight, OutputSet::all());
  Processor processor(3);
  Weights weights = processor.weights();
  processor.set_weights(weights);
  processor.transform(frame, {}, planes.views(), WeightReach::every_pixel);
  processor.reset_weights();
  processor.transform(frame, {}, planes.views());
  return bytes_of_span(planes.normalized_stokes()) + bytes_of_span(planes.levels(Plane::azimuth));
}

std::string many_frames(const std::filesystem::path&) {
  std::vector<std::string> results(6);
  for_each_frame(
      results.size(),
      [&](Processor& processor, std::size_t index) {
        const Frame frame = made_up_frame(static_cast<std::uint32_t>(index));
        Planes planes;
        planes.reshape(kWidth, kHeight, OutputSet(Plane::dolp));
        processor.transform(frame, {}, planes.views());
        results[index] = bytes_of_span(planes.levels(Plane::dolp));
      },
      2);
  std::string all;
  for (const std::string& result : results) all += result;
  return all;
}

std::string maps(const std::filesystem::path&) {
  Maps maps;
  maps.reshape(kWidth, kHeight, MapSet::all());
  MapMaker(3).fill(made_up_frame(0), {},
                   {.samples = {.black_level = 64, .noise = kNoise}, .compensation = {{}}},
                   maps.views());
  return bytes_of_span(maps.values(Map::angle_sigma)) + bytes_of_span(maps.quality());
}

std::string pictures(const std::filesystem::path&) {
  const Frame frame = made_up_frame(0);
  Processor processor;
  PictureSource source;
  source.fill(processor, frame, {});
  const PictureMaps maps = source.maps();
  std::string all;
  for (const PictureTraits& kind : kPictureKinds) {
    const Picture picture = picture_of(kind.kind, maps, ranges_of(maps));
    all += bytes_of_span(std::span<const std::uint8_t>(picture.bytes));
  }
  return all;
}

/// Every kind that the format takes, written and read again.
std::string files(ImageFormat format, const std::filesystem::path& folder) {
  const Frame frame = made_up_frame(0);
  const auto name = [&](const char* stem, ImageKind kind) {
    return folder / (stem + std::string(ending_of(format, kind)));
  };
  const WriteOptions options{.title = "a title", .provenance = "{\"software\": \"none\"}"};
  std::vector<std::filesystem::path> written;
  const auto save = [&](ImageKind kind, const auto& image, const char* stem) {
    if (!traits_of(format).writes(kind)) return;
    save_image(name(stem, kind), image, options);
    if (format != ImageFormat::raw) written.push_back(name(stem, kind));
  };
  save(ImageKind::grey, grey_image(frame), "grey");
  const std::vector<float> floats(2 * frame.samples.size(), 0.5F);
  save(ImageKind::floats, FloatImage{kWidth, kHeight, 2, floats}, "floats");
  save(ImageKind::picture, Picture(kWidth, kHeight, 3), "picture");
  if (traits_of(format).stacks) {
    PendingFile file(name("stack", ImageKind::grey));
    const auto stack = open_stack(file, format, 3, options);
    for (int i = 0; i < 3; ++i) stack->add(grey_image(frame));
    stack->finish();
    file.close();
    file.publish();
  }
  std::string all;
  for (const auto& file : written) {
    const auto reader = open_images(file);
    all += bytes_of_span(reader->read(0).as<std::uint8_t>());
    // None is told where it cannot be read.
    if (provenance_of(file).value_or(options.provenance) != options.provenance) all += "provenance";
  }
  const bool raw = format == ImageFormat::raw;
  const auto reader = open_frames(name("grey", ImageKind::grey),
                                  raw ? std::optional<RawShape>({kWidth, kHeight}) : std::nullopt);
  all += bytes_of_span(std::span<const std::uint16_t>(reader->read(0).samples));
  return all;
}

std::string calibration(const std::filesystem::path& folder) {
  CalibrationFit fit({.threads = 2});
  std::vector<Frame> frames;
  for (std::uint32_t i = 0; i < 16; ++i) {
    const FrameKind kind = i < 2 ? FrameKind::dark : i < 4 ? FrameKind::flat : FrameKind::polarized;
    frames.push_back(made_up_frame(i, kind));
    fit.add(frames.back(), {kind, 30.0 * i, "frame " + std::to_string(i)});
  }
  const Calibration fitted = fit.finish([&](std::size_t index) { return frames[index].view(); });
  save_calibration(fitted, folder / "camera.json");
  const Calibration loaded = load_calibration(folder / "camera.json");
  save_calibration_report(folder / "camera.html", loaded);
  Frame corrected = make_frame(kWidth, kHeight, 16);
  FrameCorrector(loaded, {}, kWidth, kHeight).correct(frames.back(), corrected);
  const MosaicIdentity identity = identify_mosaic(frames[4], frames[5], {.turn = 30});
  return bytes_of_span(std::span<const std::uint16_t>(corrected.samples)) + identity.verdict;
}

/// In a process of its own for each allocation, as a library that cannot be opened stays closed:
/// the second attempt must not wait for ever.
long open_the_library(long stride) {
  for (long number = 1;; number += stride) {
    const pid_t child = fork();
    if (child == 0) {
      alarm(10);
      bool failed = false;
      for (int attempt = 0; attempt < 2; ++attempt) {
        try {
          kv_fail_allocation(attempt == 0 ? number : 0);
          const Processor processor;
        } catch (const Fault& fault) {
          if (fault.kind() != (attempt == 0 ? FaultKind::memory : FaultKind::state)) _exit(2);
        }
        failed |= kv_fail_allocation(0);
      }
      _exit(failed ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (status == 0) continue;
    if (WIFEXITED(status) && WEXITSTATUS(status) == 1) return number - 1;
    std::cout << "\nopening, allocation " << number << ": status " << status << std::endl;
    std::exit(EXIT_FAILURE);
  }
}

/// What came of a run; the exit status of its process.
enum Outcome : int { kNoFailure, kWentOn, kBadAlloc, kMemoryFault, kAborted, kCrashed, kWrong };

using Files = std::map<std::string, std::string>;

Files files_in(const std::filesystem::path& folder) {
  Files files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    std::ifstream stream(entry.path(), std::ios::binary);
    files[entry.path().filename().string()] = {std::istreambuf_iterator<char>(stream), {}};
  }
  return files;
}

/// Runs of one way, each in a process of its own.
class Trial {
 public:
  /// What is put up with, as libraries beneath are so.
  struct Allowance {
    long kept = 0;         ///< allocations that a failed run may lose
    bool crashes = false;  ///< and faults that tell of another reason
  };

  Trial(std::string name, Way way, std::filesystem::path folder, Allowance allowance)
      : name_(std::move(name)),
        way_(std::move(way)),
        folder_(std::move(folder)),
        allowance_(allowance) {}

  void run(long stride) {
    for (int i = 0; i < 2; ++i) {  // what is made once and stays comes in the first run
      empty();
      expected_ = way_(folder_);
    }
    expected_files_ = files_in(folder_);
    long number = 1;
    while (run_once(number)) number += stride;
    std::cout << name_ << " " << number - 1 << ", ";
  }

  static std::size_t complaints;
  static std::map<int, std::size_t> outcomes;

 private:
  /// Whether a run came to that allocation.
  bool run_once(long number) {
    std::cout << std::flush;
    const pid_t child = fork();
    if (child == 0) {
      alarm(60);
      _exit(fail(number));
    }
    int status = 0;
    waitpid(child, &status, 0);
    const bool aborted = WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT;
    const bool crashed = allowance_.crashes && WIFSIGNALED(status) && WTERMSIG(status) == SIGSEGV;
    const int outcome = crashed             ? kCrashed
                        : aborted           ? kAborted
                        : WIFEXITED(status) ? WEXITSTATUS(status)
                                            : kWrong;
    if (outcome == kNoFailure) return false;
    ++outcomes[outcome];
    if (outcome == kWrong) {
      std::cout << "\n" << name_ << ", allocation " << number << ": status " << status << "\n";
      ++complaints;
    }
    return true;
  }

  Outcome fail(long number) {
    empty();
    const Outcome first = fail_at(number);
    if (first == kNoFailure) return first;
    // The first message of a kind makes what the C and C++ libraries keep; the second makes
    // nothing.
    empty();
    const auto descriptors = kv::endurance::process_figures().descriptors;
    const long before = kv_allocations_alive();
    Outcome outcome = fail_at(number);
    const long stay = kv_allocations_alive() - before;
    if (first == kWrong) outcome = kWrong;
    if (stay > allowance_.kept) outcome = tell(std::to_string(stay) + " allocations stay");
    if (kv::endurance::process_figures().descriptors != descriptors)
      outcome = tell("a descriptor stays");
    for (const auto& [file, content] : files_in(folder_)) {
      const auto found = expected_files_.find(file);
      if (found == expected_files_.end()) {
        outcome = tell("there is a file " + file);
      } else if (found->second != content) {
        outcome = tell(file + " has another content");
      }
    }
    empty();
    if (way_(folder_) != expected_ || files_in(folder_) != expected_files_) {
      outcome = tell("the next run, undisturbed, had another result");
    }
    return outcome;
  }

  Outcome fail_at(long number) const {
    try {
      kv_fail_allocation(number);
      const bool right = way_(folder_) == expected_;
      const bool failed = kv_fail_allocation(0);
      if (!right) return tell("a wrong result");
      return failed ? kWentOn : kNoFailure;
    } catch (const std::bad_alloc&) {
      kv_fail_allocation(0);
      return kBadAlloc;
    } catch (const Fault& fault) {
      kv_fail_allocation(0);
      if (fault.kind() == FaultKind::memory) return kMemoryFault;
      // C libraries tell it in their own words.
      const std::string line = fault.what();
      const bool told =
          line.find("memory") != std::string::npos || line.find("alloc") != std::string::npos;
      return told || allowance_.crashes ? kMemoryFault : tell("the line: " + line);
    } catch (const std::exception& error) {
      kv_fail_allocation(0);
      return tell(error.what());
    }
  }

  static Outcome tell(const std::string& what) {
    std::cout << "\n" << what << std::flush;
    return kWrong;
  }

  void empty() const {
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directories(folder_);
  }

  std::string name_;
  Way way_;
  std::filesystem::path folder_;
  Allowance allowance_;
  std::string expected_;
  Files expected_files_;
};

std::size_t Trial::complaints = 0;
std::map<int, std::size_t> Trial::outcomes;

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) return EXIT_FAILURE;
  const std::filesystem::path folder = arguments[1];
  const long stride = std::strtol(arguments[2], nullptr, 10);
  std::cout << "allocations of opening " << open_the_library(stride) << ", ";
  const Processor keeps_the_library_open;
  Trial("transform", transform, folder, {}).run(stride);
  // Which thread meets the failure differs, and with it what is made for its first message.
  Trial("frames on two threads", many_frames, folder, {.kept = 4}).run(stride);
  Trial("maps", maps, folder, {}).run(stride);
  Trial("pictures", pictures, folder, {}).run(stride);
  // A constructor of nlohmann's JSON values that throws loses what it has begun, on each level.
  Trial("calibration", calibration, folder, {.kept = 8}).run(stride);
  for (const ImageFormatTraits& format : image_formats()) {
    if (!format.available()) continue;
    const auto way = [&](const std::filesystem::path& place) {
      return files(format.format, place);
    };
    // libtiff does not look at all of its own allocations.
    const bool libtiff = format.format == ImageFormat::tiff;
    Trial(std::string(format.name), way, folder, {.crashes = libtiff}).run(stride);
  }
  constexpr std::array names = {"",
                                "went on all the same",
                                "std::bad_alloc",
                                "Fault that tells of memory",
                                "ended the process by abort()",
                                "crashed in libtiff",
                                "wrong"};
  for (const auto& [outcome, number] : Trial::outcomes) {
    std::cout << number << " " << names[static_cast<std::size_t>(outcome)] << "; ";
  }
  std::cout << std::endl;
  return Trial::complaints == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

#include "command_line/transform/transform_command.h"

#include <algorithm>
#include <chrono>
#include <iomanip>
#include <iostream>
#include <new>
#include <sstream>
#include <string>
#include <system_error>

#include "command_line/exit_status.h"
#include "command_line/options/common_options.h"
#include "command_line/progress_line.h"
#include "command_line/transform/frame_output.h"
#include "command_line/transform/output_names.h"
#include "kv/calibration/calibration_file.h"
#include "kv/calibration/frame_corrector.h"
#include "kv/pictures/picture_kinds.h"
#include "kv/polarization/fault.h"
#include "kv/polarization/mean_plane.h"
#include "platform/optional_library.h"
#include "platform/process.h"

namespace kv::polarization {
namespace {

constexpr const char* kLoggerLibrary = "kevrinth_qrm_logger";

class TransformRun {
 public:
  explicit TransformRun(const TransformOptions& options)
      : options_(options),
        mosaic_(options.mosaic),
        names_(options.folder, options.files),
        progress_(options.files.size() > 1),
        total_(options.files.size()) {
    if (options.calibration) {
      calibration_ = load_calibration(*options.calibration);
      if (!options.mosaic_given) mosaic_ = calibration_->mosaic;
    }
    if (options.log_level &&
        !platform::is_loaded((std::string(kLoggerLibrary) + platform::kLibrarySuffix).c_str())) {
      throw Fault(FaultKind::argument,
                  "--log needs the library " + std::string(kLoggerLibrary) +
                      ", which was not found; put it beside kevrinth_qrm_polarization_processor");
    }
  }

  int run() {
    for (std::size_t i = 0; i < options_.files.size() && !platform::interrupted(); ++i) {
      transform_file(options_.files[i]);
    }
    progress_.hide();
    warn_of_clipped_intensity();
    print_summary();
    if (platform::interrupted()) return exit_interrupted;
    return failures_ == 0 ? exit_success : frames_ == 0 ? exit_nothing_done : exit_some_failed;
  }

 private:
  void transform_file(const std::filesystem::path& file) {
    show_progress();
    std::unique_ptr<FrameReader> reader;
    std::size_t pages = 0;
    const auto open_file = [&] {
      reader = open_frames_of_user(file, options_.raw_shape);
      pages = reader->count();
    };
    if (!attempt(file.string(), open_file)) return;
    total_ += pages - 1;
    for (std::size_t page = 0; page < pages && !platform::interrupted(); ++page) {
      show_progress();
      const std::string name =
          file.string() + (pages > 1 ? ", page " + std::to_string(page + 1) : "");
      attempt(name, [&] { transform_frame(file, *reader, page, name); });
    }
  }

  void show_progress() { progress_.update(frames_ + failures_, failures_, total_); }

  /// Reports a failure of the work and lets the run go on.
  template <class Work>
  bool attempt(const std::string& name, Work work) {
    try {
      work();
      return true;
    } catch (const Fault& error) {
      report(name + ": " + error.what());
    } catch (const std::bad_alloc&) {
      report(
          name +
          ": there is not enough memory for this frame; close other programs or use a smaller one");
    }
    ++failures_;
    return false;
  }

  void transform_frame(const std::filesystem::path& file, FrameReader& reader, std::size_t page,
                       const std::string& name) {
    reader.read(page, frame_);
    for (const std::string& note : reader.notes()) report("warning: " + name + ": " + note);
    if (options_.bit_depth) frame_.bit_depth = *options_.bit_depth;
    warn_of_excess(frame_, name);
    const Frame& frame = calibration_ ? corrected() : frame_;
    const std::string stem = names_.stem_for(file, page, reader.count());

    if (options_.log_level) progress_.hide();
    compute_planes(frame);

    FrameOutput output;
    add_planes(stem, output);
    if (options_.mean) add_mean(frame, stem, output);
    if (!options_.pictures.empty()) add_pictures(frame, stem, output);
    output.write();
    ++frames_;
  }

  const Frame& corrected() {
    if (!corrector_ || corrected_.width != frame_.width || corrected_.height != frame_.height) {
      corrector_.emplace(*calibration_, mosaic_, frame_.width, frame_.height,
                         CorrectionSettings{.threads = 0});
    }
    corrector_->correct(frame_, corrected_);
    return corrected_;
  }

  void compute_planes(const Frame& frame) {
    planes_.reshape(frame.width, frame.height, options_.planes, options_.output_max);
    if (options_.planes.empty()) return;
    if (frames_ == 0) touch_planes();
    const auto start = std::chrono::steady_clock::now();
    processor_.transform(frame, mosaic_, planes_.views());
    seconds_ += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    pixels_ += static_cast<double>(frame.samples.size());
    if (!options_.planes.has(Plane::intensity)) return;
    const std::size_t clipped = count_clipped_intensity(frame);
    clipped_pixels_ += static_cast<double>(clipped);
    if (clipped > 0) ++clipped_frames_;
  }

  /// The system clears fresh memory when it is first written: that is no time of the transform.
  void touch_planes() {
    const PlaneViews views = planes_.views();
    std::ranges::fill(views.normalized_stokes, 0.0F);
    for (const PlaneTraits& traits : kPlanes) {
      if (traits.element == PlaneElement::level) {
        std::ranges::fill(views.level(traits.plane).levels, std::uint16_t{0});
      }
    }
  }

  void warn_of_clipped_intensity() {
    if (clipped_frames_ == 0) return;
    std::ostringstream line;
    line << "warning: the plane intensity is clipped in "
         << (clipped_frames_ == 1 ? "1 frame" : std::to_string(clipped_frames_) + " frames")
         << ", where S0 exceeds the range of one sample; of all pixels " << std::setprecision(2)
         << 100 * clipped_pixels_ / pixels_
         << " per cent. --planes mean gives the mean of the four samples, which never clips";
    report(line.str());
  }

  void warn_of_excess(const Frame& frame, const std::string& name) {
    const std::size_t excess = count_samples_above_full_scale(frame);
    if (excess == 0) return;
    report("warning: " + name + ": " + std::to_string(excess) + " samples are above " +
           std::to_string(full_scale(frame.bit_depth)) + ", the largest value of " +
           std::to_string(frame.bit_depth) + " bits; check --bit-depth");
  }

  void add_planes(const std::string& stem, FrameOutput& output) {
    for (const PlaneTraits& traits : kPlanes) {
      if (!options_.planes.has(traits.plane)) continue;
      const std::string name = stem + "_" + std::string(traits.name);
      if (traits.element == PlaneElement::float_pair) {
        const ImageFormat format = preferred_format(ImageKind::floats);
        output.add(path_for(name, format, ImageKind::floats), [this, format](PendingFile& file) {
          write_image(
              file, format,
              FloatImage{planes_.width(), planes_.height(), 2, planes_.normalized_stokes()});
        });
      } else {
        output.add(path_for(name, options_.format, ImageKind::grey), [this, plane = traits.plane](
                                                                         PendingFile& file) {
          write_image(file, options_.format,
                      GreyImage{planes_.width(), planes_.height(), 16, planes_.levels(plane)});
        });
      }
    }
  }

  void add_mean(const Frame& frame, const std::string& stem, FrameOutput& output) {
    mean_.resize(frame.samples.size());
    fill_mean_plane(frame, mean_);
    output.add(path_for(stem + "_mean", options_.format, ImageKind::grey), [this, &frame](
                                                                               PendingFile& file) {
      // Samples may have more bits than they claim, and then so have means.
      const bool fits = std::ranges::max(mean_) <= full_scale(frame.bit_depth);
      write_image(file, options_.format,
                  GreyImage{frame.width, frame.height, fits ? frame.bit_depth : 16, mean_});
    });
  }

  void add_pictures(const Frame& frame, const std::string& stem, FrameOutput& output) {
    picture_source_.fill(processor_, frame, mosaic_, planes_for(options_.pictures));
    const PictureMaps maps = picture_source_.maps();
    PictureRanges ranges = ranges_of(maps);
    if (options_.dolp_white) ranges.dolp_white = *options_.dolp_white;
    const ImageFormat format = preferred_format(ImageKind::picture);
    for (const PictureKind kind : options_.pictures) {
      const std::string name = stem + "_" + std::string(traits_of(kind).name) + "_picture";
      output.add(path_for(name, format, ImageKind::picture), [=](PendingFile& file) {
        write_image(file, format, picture_of(kind, maps, ranges));
      });
    }
  }

  std::filesystem::path path_for(const std::string& name, ImageFormat format,
                                 ImageKind kind) const {
    return names_.path_for(name + std::string(ending_of(format, kind)));
  }

  void report(const std::string& line) {
    progress_.hide();
    std::cerr << "kv-polarize: " << line << std::endl;
  }

  void print_summary() const {
    std::cout << frames_ << (frames_ == 1 ? " frame" : " frames") << " transformed";
    if (failures_ > 0) std::cout << ", " << failures_ << " failed";
    if (seconds_ > 0) {
      std::cout << "; " << std::fixed << std::setprecision(0) << pixels_ / 1e6 / seconds_
                << " megapixels per second in the transform itself, without files and pictures";
    }
    if (frames_ > 0) std::cout << "; results in " << options_.folder.string();
    std::cout << std::endl;
  }

  const TransformOptions& options_;
  Mosaic mosaic_;
  std::optional<Calibration> calibration_;
  std::optional<FrameCorrector> corrector_;  // for frames of the size of corrected_
  Frame corrected_;
  OutputNames names_;
  ProgressLine progress_;
  std::size_t total_;  // frames, as far as the files that were opened tell
  Processor processor_;
  Frame frame_;
  Planes planes_;
  Buffer<std::uint16_t> mean_;
  PictureSource picture_source_;
  std::size_t frames_ = 0;
  std::size_t failures_ = 0;
  double pixels_ = 0;  // of frames whose planes were computed
  std::size_t clipped_frames_ = 0;
  double clipped_pixels_ = 0;
  double seconds_ = 0;
};

void make_folder(const std::filesystem::path& folder) {
  std::error_code failure;
  std::filesystem::create_directories(folder, failure);
  if (!std::filesystem::is_directory(folder)) {
    const std::string why = failure ? failure.message() : "a file has this name";
    throw Fault(FaultKind::argument, "the output folder " + folder.string() + " cannot be made: " +
                                         why + "; choose another one with -o");
  }
}

}  // namespace

int run_transform(const TransformOptions& options) {
  if (options.log_level) {
    platform::set_environment("KEVRINTH_QRM_LOGGER_LEVEL",
                              std::to_string(*options.log_level).c_str());
  }
  TransformRun run(options);
  make_folder(options.folder);
  return run.run();
}

}  // namespace kv::polarization

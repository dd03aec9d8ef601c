#include "kv/calibration/calibration_fit.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "kv/polarization/fault.h"
#include "toolkit/api/memory_checks.h"
#include "toolkit/api/packed_frame.h"
#include "toolkit/api/request_checks.h"
#include "toolkit/calibration/fit/findings.h"
#include "toolkit/calibration/fit/phase_check.h"
#include "toolkit/calibration/fit/sensor_maps.h"
#include "toolkit/calibration/fit/sensor_noise.h"
#include "toolkit/calibration/fit/solved_angles.h"

namespace kv::polarization {
namespace {

/// Of the singular values of the angles: below, errors of the class means grow twentyfold.
constexpr double kLeastSpread = 0.05;

/// Angles modulo 180 degrees that are closer are one.
constexpr double kSameAngle = 0.5;

// Of a sensor that nobody told about.
constexpr double kFullWell = 10000;  // electrons at full scale
constexpr float kReadNoise = 2.5f;   // electrons

void check(const FitSettings& settings) {
  check(settings.mosaic);
  if (!std::isfinite(settings.black_level)) {
    refuse("the black level is no number; it must be one in counts");
  }
  if (!(settings.source_dolp > 0 && settings.source_dolp <= 1)) {
    refuse("the source's degree of polarization is " + std::to_string(settings.source_dolp) +
           "; it must be above 0, up to 1");
  }
  if (!(settings.clipped_share >= 0)) refuse("the share of clipped pixels must be 0 or more");
  if (settings.noise && !(settings.noise->gain > 0 && settings.noise->read_noise >= 0)) {
    refuse("the noise is not that of a sensor; its gain must be above 0, its read noise 0 or more");
  }
}

std::string size_of(int width, int height, int bit_depth) {
  return std::to_string(width) + " x " + std::to_string(height) + " pixels of " +
         std::to_string(bit_depth) + " bits";
}

std::size_t distinct_angles(const std::vector<ClassLight>& lights) {
  std::vector<double> distinct;
  for (const ClassLight& light : lights) {
    if (std::none_of(distinct.begin(), distinct.end(), [&](double other) {
          return std::abs(half_turn(light.angle - other)) < kSameAngle;
        })) {
      distinct.push_back(light.angle);
    }
  }
  return distinct.size();
}

/// Empty if no polarized frame was refused.
std::string first_refusal(const Stack& stack) {
  for (const StackEntry& entry : stack) {
    if (entry.record.kind != FrameKind::polarized || entry.record.used) continue;
    return " (" + entry.record.name + " cannot be used: " + entry.record.refusal + ")";
  }
  return "";
}

void check_angles_determine(const Stack& stack, const std::vector<ClassLight>& lights, bool known) {
  const std::size_t distinct = known ? distinct_angles(lights) : lights.size();
  if (distinct < 3) {
    refuse("the polarized frames that can be used have " + std::to_string(distinct) +
           " different angles; it must be 3 or more, modulo 180 degrees" + first_refusal(stack));
  }
  if (!known) return;
  if (spread_of_angles(lights) < kLeastSpread) {
    refuse(
        "the angles of the polarized frames are too close to each other to determine the "
        "sensor; they must be spread over half a turn");
  }
}

}  // namespace

class CalibrationFit::Implementation {
 public:
  explicit Implementation(const FitSettings& settings)
      : settings_(settings), pool_(WorkerPool::threads_of(settings.threads)) {
    check(settings);
  }

  void add(const FrameView& frame, const StackFrame& what);
  Calibration finish(const FrameAgain& again);

 private:
  void begin(const FrameView& frame);
  void sum(const FramePart& frame, const StackEntry& entry, double sign);
  FrameTerms terms_of(const TileMeans& means);
  std::size_t next_half(double angle) const;
  void take_out_refused(const FrameAgain& again);
  ClassValues black_classes() const;
  void find_angles(const ClassValues& black);
  ClassValues fill_black();
  void find_noise(const ClassNormals& normals, const RawSolution& solution, std::size_t frames);
  void mark_clipped();
  void fill_records(const ClassResponses& responses);
  Calibration result();

  double range() const { return calibration_.clip_level - black_guess_; }

  FitSettings settings_;
  WorkerPool pool_;
  Buffer<std::uint16_t> room_;
  std::optional<PixelSums> sums_;
  PixelGrid grid_{};
  Stack stack_;
  double black_guess_ = 0;  // counts
  double scale_ = 0;        // of the regressors, counts
  std::size_t polarized_ = 0;
  std::optional<ClassValues> dark_reference_;
  bool finished_ = false;

  Calibration calibration_;
  FitFigures figures_;
};

void CalibrationFit::Implementation::begin(const FrameView& frame) {
  if (frame.width % 2 != 0 || frame.height % 2 != 0) {
    refuse("the frames have " + std::to_string(frame.width) + " x " + std::to_string(frame.height) +
           " pixels; width and height must be even");
  }
  sums_.emplace(frame.width, frame.height, settings_.mosaic);
  grid_ = {frame.width, frame.height, class_numbers(settings_.mosaic)};
  calibration_.width = frame.width;
  calibration_.height = frame.height;
  calibration_.mosaic = settings_.mosaic;
  calibration_.bit_depth = frame.bit_depth;
  calibration_.clip_level =
      settings_.clip_level.value_or(static_cast<std::uint16_t>(full_scale(frame.bit_depth)));
  calibration_.source_dolp = settings_.source_dolp;
  calibration_.angles_solved = !settings_.angles_known;
  const float gain = static_cast<float>(full_scale(frame.bit_depth) / kFullWell);
  calibration_.noise = settings_.noise.value_or(SensorNoise{gain, kReadNoise});
  black_guess_ = settings_.black_level;
}

void CalibrationFit::Implementation::add(const FrameView& frame, const StackFrame& what) {
  if (finished_) throw Fault(FaultKind::state, "the fit is finished; make another one");
  check_mosaic_frame(frame);
  const bool has_angle =
      what.kind == FrameKind::polarized && (settings_.angles_known || polarized_ == 0);
  if (has_angle && !std::isfinite(what.angle)) {
    refuse("the polarizer's angle of " + what.name + " is no number; it must be one in degrees");
  }
  if (!sums_) begin(frame);
  StackEntry entry;
  entry.record.name = what.name;
  entry.record.kind = what.kind;
  entry.record.angle = has_angle ? what.angle : 0;
  if (frame.width != grid_.width || frame.height != grid_.height ||
      frame.bit_depth != calibration_.bit_depth) {
    entry.record.refusal = "it has " + size_of(frame.width, frame.height, frame.bit_depth) +
                           "; the first frame has " +
                           size_of(grid_.width, grid_.height, calibration_.bit_depth);
    stack_.push_back(std::move(entry));
    return;
  }
  const FramePart part = packed(frame, settings_.mosaic, room_);
  entry.record.used = true;
  entry.means = tile_means(part, calibration_.clip_level, pool_);
  if (what.kind == FrameKind::dark && !dark_reference_) {
    dark_reference_ = entry.means.classes;
    black_guess_ = vector_of(entry.means.classes).mean();
  } else if (what.kind == FrameKind::polarized) {
    entry.terms = terms_of(entry.means);
    entry.half = next_half(entry.record.angle);
    ++polarized_;
  }
  sum(part, entry, 1);
  entry.summed = true;
  stack_.push_back(std::move(entry));
}

FrameTerms CalibrationFit::Implementation::terms_of(const TileMeans& means) {
  FrameTerms terms;
  terms.means = means.classes;
  const Eigen::Vector3d stokes = ideal_stokes(vector_of(means.classes));
  if (scale_ == 0) scale_ = std::max(1.0, stokes[0]);
  terms.regressors = {1, stokes[0] / scale_, stokes[1] / scale_, stokes[2] / scale_};
  // Only the weights' ratios matter; near 1 they keep the sums small.
  const SensorNoise& noise = calibration_.noise;
  const double unit = noise.variance(static_cast<float>(scale_ / 2));
  for (std::size_t number = 0; number < 4; ++number) {
    terms.weights[number] =
        unit / noise.variance(static_cast<float>(means.classes[number] - black_guess_));
  }
  return terms;
}

/// In turns; frames of one angle in turns among themselves, so that both halves have all angles.
std::size_t CalibrationFit::Implementation::next_half(double angle) const {
  for (auto entry = stack_.rbegin(); settings_.angles_known && entry != stack_.rend(); ++entry) {
    if (entry->is(FrameKind::polarized) &&
        std::abs(half_turn(entry->record.angle - angle)) < kSameAngle) {
      return 1 - entry->half;
    }
  }
  return polarized_ % 2;
}

void CalibrationFit::Implementation::sum(const FramePart& frame, const StackEntry& entry,
                                         double sign) {
  switch (entry.record.kind) {
    case FrameKind::polarized:
      sums_->add_polarized(frame, entry.terms, entry.half, calibration_.clip_level, sign, pool_);
      break;
    case FrameKind::dark:
      sums_->add_dark(frame, *dark_reference_, sign, pool_);
      break;
    case FrameKind::flat:
      sums_->add_flat(frame, entry.means.classes, sign, pool_);
      break;
  }
}

void CalibrationFit::Implementation::take_out_refused(const FrameAgain& again) {
  for (std::size_t index = 0; index < stack_.size(); ++index) {
    StackEntry& entry = stack_[index];
    if (entry.record.used || !entry.summed) continue;
    if (!again) {
      throw Fault(FaultKind::state, entry.record.name + " cannot be used (" + entry.record.refusal +
                                        ") and has to be read again to be taken out");
    }
    const FrameView frame = again(index);
    check_mosaic_frame(frame);
    const bool same_size = frame.width == grid_.width && frame.height == grid_.height;
    const FramePart part = same_size ? packed(frame, settings_.mosaic, room_) : FramePart{};
    if (!same_size || !(tile_means(part, calibration_.clip_level, pool_) == entry.means)) {
      refuse(entry.record.name +
             " came with other samples when it was read again; it must be the "
             "same frame");
    }
    sum(part, entry, -1);
    entry.summed = false;
  }
}

ClassValues CalibrationFit::Implementation::black_classes() const {
  if (!used_frames(stack_, FrameKind::dark).empty()) return mean_of(stack_, FrameKind::dark);
  const double level = settings_.black_level;
  return {level, level, level, level};
}

/// Puts solved angles into the records.
void CalibrationFit::Implementation::find_angles(const ClassValues& black) {
  std::vector<ClassLight> lights = class_lights(stack_, black);
  std::optional<Eigen::Vector4d> unpolarized;
  if (!used_frames(stack_, FrameKind::flat).empty()) {
    unpolarized = vector_of(mean_of(stack_, FrameKind::flat)) - vector_of(black);
  }
  figures_.level_deviation = solve_angles(lights, unpolarized);
  const std::vector<std::size_t> frames = used_frames(stack_, FrameKind::polarized);
  for (std::size_t i = 0; i < frames.size(); ++i) stack_[frames[i]].record.angle = lights[i].angle;
}

/// Returns the class means of the map: of all pixels, bad ones too, as those of the frames are.
ClassValues CalibrationFit::Implementation::fill_black() {
  PixelMaps& maps = calibration_.maps;
  maps.black.resize(grid_.pixels());
  maps.bad.resize(grid_.pixels());
  std::fill(maps.bad.begin(), maps.bad.end(), std::uint8_t{0});
  const std::size_t darks = used_frames(stack_, FrameKind::dark).size();
  figures_.dark_variance = calibration_.noise.dark_variance();
  figures_.black_variance = 0;
  if (darks == 0) {
    std::fill(maps.black.begin(), maps.black.end(), static_cast<float>(settings_.black_level));
    return black_classes();
  }
  const std::optional<double> variance =
      polarization::fill_black(grid_, *sums_, darks, *dark_reference_, range(), maps);
  figures_.noise.dark_from_frames = variance.has_value();
  constexpr double rounding = 1.0 / 12;  // variance that whole counts have at least
  if (variance) figures_.dark_variance = std::max(rounding, *variance);
  figures_.black_variance = figures_.dark_variance / static_cast<double>(darks);
  // Samples that scatter by less than a third of a count round to one number for ever.
  if (variance && *variance < 0.1) figures_.black_variance += rounding;
  return black_classes();
}

void CalibrationFit::Implementation::find_noise(const ClassNormals& normals,
                                                const RawSolution& solution, std::size_t frames) {
  SensorNoise& noise = calibration_.noise;
  if (frames > 3) {
    const ClassValues residuals = mean_residuals(
        grid_, solution.residuals, static_cast<double>(frames - 3), calibration_.maps);
    const double gain = photon_transfer_gain(normals, residuals, figures_.dark_variance);
    if (gain > 0) {
      noise.gain = static_cast<float>(gain);
      figures_.noise.gain_from_frames = true;
    }
  }
  constexpr double rounding = 1.0 / 12;
  if (figures_.noise.dark_from_frames) {
    noise.read_noise = static_cast<float>(
        std::sqrt(std::max(0.0, figures_.dark_variance - rounding)) / noise.gain);
  }
}

void CalibrationFit::Implementation::mark_clipped() {
  Buffer<std::uint8_t>& bad = calibration_.maps.bad;
  for (std::size_t pixel = 0; pixel < bad.size(); ++pixel) {
    if (sums_->clipped()[pixel] == 0) continue;
    bad[pixel] = static_cast<std::uint8_t>(bad[pixel] | bad_pixel::clipped);
  }
}

void CalibrationFit::Implementation::fill_records(const ClassResponses& responses) {
  const ClassValues black = black_classes();
  const std::vector<std::size_t> frames = used_frames(stack_, FrameKind::polarized);
  const std::vector<double> deviations = tile_deviations(stack_, black);
  for (std::size_t i = 0; i < frames.size(); ++i) {
    StackEntry& entry = stack_[frames[i]];
    const Eigen::Vector4d means = vector_of(entry.means.classes) - vector_of(black);
    entry.record.angle_deviation =
        half_turn(seen_light(responses, means).angle - entry.record.angle);
    if (deviations.empty()) continue;
    const double variance = calibration_.noise.gain * means.mean() + figures_.dark_variance;
    const double pixels_of_mean =
        static_cast<double>(grid_.pixels()) / static_cast<double>(4 * entry.means.tiles.size());
    entry.record.excess = deviations[i] * means.mean() / std::sqrt(variance / pixels_of_mean);
  }
}

Calibration CalibrationFit::Implementation::finish(const FrameAgain& again) {
  if (std::exchange(finished_, true)) {
    throw Fault(FaultKind::state, "the fit is finished; make another one");
  }
  if (used_frames(stack_, FrameKind::polarized).empty()) {
    refuse("the stack has no polarized frames; it must have some at 3 angles or more");
  }
  check_frames(stack_, {black_classes(), range(), settings_.clipped_share});
  const ClassValues black = black_classes();
  check_angles_determine(stack_, class_lights(stack_, black), settings_.angles_known);
  do {
    if (!settings_.angles_known) find_angles(black);
  } while (check_angles(stack_, black) && !settings_.angles_known);
  const std::vector<ClassLight> lights = class_lights(stack_, black);
  check_angles_determine(stack_, lights, true);
  const ClassResponses responses = fit_classes(lights);
  check_phase(responses, settings_.mosaic);
  take_out_refused(again);

  const ClassValues black_means = fill_black();
  mark_clipped();
  const std::vector<std::size_t> frames = used_frames(stack_, FrameKind::polarized);
  const ClassNormal::Source source{stack_, black_means, responses, scale_};
  const ClassNormals normals = class_normals(source, frames);
  PixelMaps& maps = calibration_.maps;
  RawSolution solution{{&maps.gain, &maps.diattenuation, &maps.orientation}, {}};
  solve_pixels(grid_, *sums_, maps.black, normals, pool_, solution);
  find_noise(normals, solution, frames.size());
  for (Buffer<float>* map :
       {&maps.gain_error, &maps.diattenuation_error, &maps.orientation_error}) {
    map->resize(grid_.pixels());
  }
  finish_maps(grid_, normals,
              {calibration_.noise.gain, figures_.dark_variance, figures_.black_variance}, pool_,
              calibration_);
  summarise(grid_, figures_.black_variance, calibration_);
  fill_records(responses);
  add_findings({grid_, *sums_, stack_, source, calibration_.noise.gain, figures_.dark_variance,
                figures_.black_variance},
               settings_, figures_, calibration_);
  for (StackEntry& entry : stack_) calibration_.frames.push_back(std::move(entry.record));
  return std::move(calibration_);
}

CalibrationFit::CalibrationFit(const FitSettings& settings)
    : implementation_(std::make_unique<Implementation>(settings)) {}
CalibrationFit::~CalibrationFit() = default;
CalibrationFit::CalibrationFit(CalibrationFit&&) noexcept = default;
CalibrationFit& CalibrationFit::operator=(CalibrationFit&&) noexcept = default;

void CalibrationFit::add(const FrameView& frame, const StackFrame& what) {
  if (!implementation_) throw Fault(FaultKind::state, "the fit was moved from; make another one");
  implementation_->add(frame, what);
}

Calibration CalibrationFit::finish(const FrameAgain& again) {
  if (!implementation_) throw Fault(FaultKind::state, "the fit was moved from; make another one");
  return implementation_->finish(again);
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <cmath>

#include "toolkit/calibration/report/chart.h"
#include "toolkit/calibration/report/measurement_errors.h"
#include "toolkit/calibration/report/number_text.h"
#include "toolkit/calibration/report/sections.h"

namespace kv::polarization {
namespace {

constexpr double kShownDolp = 0.2;
constexpr int kPointsADecade = 8;
constexpr int kDecades = 2;

/// Of a mean in which noise counts for a tenth.
constexpr int kManyFrames = 100;

struct Compared {
  StokesErrors before;
  StokesErrors after;
};

class Comparison {
 public:
  Comparison(const Calibration& calibration, const PropertySamples& samples)
      : noise_(calibration.noise),
        before_(uncalibrated(calibration)),
        after_(calibrated(calibration, samples)) {
    double black = 0;
    for (const PixelClass& pixels : calibration.classes) black += pixels.black.value / 4;
    largest_s0_ = calibration.clip_level - black;
  }

  /// Counts: at a DoLP of 1 the brightest pixel is at the clip level.
  double largest_s0() const { return largest_s0_; }

  Compared at(const Measurement& measurement) const {
    return {errors_of(before_, noise_, measurement), errors_of(after_, noise_, measurement)};
  }

 private:
  SensorNoise noise_;
  CellDeviations before_;
  CellDeviations after_;
  double largest_s0_ = 0;
};

std::string arrow(double before, double after, std::string_view unit = {}) {
  return with_unit(before, unit, 2) + " → " + with_unit(after, unit, 2);
}

void add_error_table(HtmlWriter& page, const Comparison& comparison) {
  Table table(page, {"S₀, counts", "of the range", "DoLP", "DoLP error, one frame", "100 frames",
                     "Angle error, one frame", "100 frames"});
  for (const double share : {1.0, 0.1, 0.01}) {
    for (const double dolp : {0.05, 0.2, 1.0}) {
      const double s0 = share * comparison.largest_s0();
      const Compared one = comparison.at({s0, dolp, 1});
      const Compared many = comparison.at({s0, dolp, kManyFrames});
      table.row({fixed(s0, 0), with_unit(100 * share, "%", share < 1 ? 1 : 3),
                 significant(dolp, dolp < 1 ? 1 : 2), arrow(one.before.dolp, one.after.dolp),
                 arrow(many.before.dolp, many.after.dolp),
                 arrow(one.before.angle, one.after.angle, "°"),
                 arrow(many.before.angle, many.after.angle, "°")});
    }
  }
}

struct ErrorLine {
  StokesErrors Compared::*state;
  int frames;
  std::string_view style;
  std::string_view name;
};
constexpr std::array<ErrorLine, 4> kErrorLines{{
    {&Compared::before, 1, "before", "before, one frame"},
    {&Compared::after, 1, "after", "after, one frame"},
    {&Compared::before, kManyFrames, "before averaged", "before, mean of 100 frames"},
    {&Compared::after, kManyFrames, "after averaged", "after, mean of 100 frames"},
}};

void add_error_chart(HtmlWriter& page, const Comparison& comparison, double StokesErrors::*value,
                     const std::string& title) {
  std::array<std::vector<Point>, kErrorLines.size()> lines;
  std::vector<double> sizes;
  std::vector<double> levels;
  for (int i = 0; i <= kDecades * kPointsADecade; ++i) {
    const double decade = static_cast<double>(i) / kPointsADecade - kDecades;
    const double s0 = comparison.largest_s0() * std::pow(10, decade);
    levels.push_back(s0);
    for (std::size_t j = 0; j < lines.size(); ++j) {
      const Compared errors = comparison.at({s0, kShownDolp, kErrorLines[j].frames});
      lines[j].push_back({s0, errors.*kErrorLines[j].state.*value});
      sizes.push_back(lines[j].back().y);
    }
  }
  const auto figure = page.open("figure");
  Chart chart(page, title + " against S₀, before and after calibration",
              logarithmic_axis("S₀, counts", levels), logarithmic_axis(title, sizes));
  for (std::size_t j = 0; j < lines.size(); ++j) chart.line(lines[j], kErrorLines[j].style);
}

void add_key(HtmlWriter& page) {
  const auto key = page.open("p", {{"class", "key"}});
  for (const ErrorLine& line : kErrorLines) {
    const auto entry = page.open("span");
    {
      const auto svg = page.open("svg", {{"viewBox", "0 0 30 10"}, {"aria-hidden", "true"}});
      page.empty("path", {{"d", "M1 5L29 5"}, {"class", "line " + std::string(line.style)}});
    }
    page.text(line.name);
  }
}

void add_formulas(HtmlWriter& page) {
  const auto details = page.open("div", {{"class", "method"}});
  page.element("h3", "How these were worked out");
  page.element("p",
               "To first order, for light of DoLP p and angle φ. With a the nominal angle of a "
               "pixel, c = cos 2(a − φ) and s = sin 2(a − φ), deviations g of its relative gain, "
               "d of its diattenuation and e of its orientation in radians change its sample, in "
               "units of S₀, by");
  page.element("p", "δx = g (1 + D p c) / 2 + d p c / 2 − e D p s,", {{"class", "formula"}});
  page.element("p", "and the results by the sums over the four pixels of a neighbourhood");
  page.element("p", "δDoLP = Σ (c / D − p / 2) δx,", {{"class", "formula"}});
  page.element("p", "δφ = Σ s δx / (2 p D).", {{"class", "formula"}});
  page.element("p",
               "Before: D = 1, and the deviations of pixels from ideal ones, which are those of "
               "the mean of their class, the same for all, and the scatter within it, each pixel "
               "on its own. After: D the mean of the sensor, and the errors of the maps, each "
               "pixel on its own. Both have the noise of the samples, of variance K x + σ² over S₀ "
               "squared, with K the gain in counts per electron, x the sample and σ² the variance "
               "in the dark, divided by the number of frames. Errors are root mean squares over "
               "all angles φ; those of the angle "
               "are bounded by 52°, that of pure chance. First order holds where DoLP is several "
               "times its error. What lenses add, and what the source had of its own, is not part "
               "of it.");
}

}  // namespace

void add_measurement_errors(HtmlWriter& page, const Calibration& calibration,
                            const PropertySamples& samples) {
  const Comparison comparison(calibration, samples);
  const auto section = page.open("section");
  page.element("h2", "What it means for measurements");
  if (!(comparison.largest_s0() > 0) || !(calibration.noise.gain > 0)) {
    return page.element("p",
                        "Without a gain above 0, and a clip level above black, errors cannot "
                        "be told.");
  }
  const Compared one = comparison.at({comparison.largest_s0(), kShownDolp, 1});
  const Compared many = comparison.at({comparison.largest_s0(), kShownDolp, kManyFrames});
  const auto change = [](double before, double after, std::string_view unit) {
    return "from " + with_unit(before, unit, 2) + " to " + with_unit(after, unit, 2);
  };
  page.element("p", "In bright light of DoLP " + fixed(kShownDolp, 1) +
                        ", the calibration takes the error of DoLP in one 2×2 neighbourhood of "
                        "one frame " +
                        change(one.before.dolp, one.after.dolp, "") + ", and that of the angle " +
                        change(one.before.angle, one.after.angle, "°") +
                        ". In the mean of 100 frames, which has a tenth of the noise, they go " +
                        change(many.before.dolp, many.after.dolp, "") + " and " +
                        change(many.before.angle, many.after.angle, "°") + ".");
  {
    const auto row = page.open("div", {{"class", "row two"}});
    add_error_chart(page, comparison, &StokesErrors::dolp, "Error of DoLP, at DoLP 0.2");
    add_error_chart(page, comparison, &StokesErrors::angle, "Error of angle, °, at DoLP 0.2");
  }
  add_key(page);
  add_error_table(page, comparison);
  add_formulas(page);
}

}  // namespace kv::polarization

#include <cmath>

#include "toolkit/calibration/report/chart.h"
#include "toolkit/calibration/report/measurement_errors.h"
#include "toolkit/calibration/report/number_text.h"
#include "toolkit/calibration/report/sections.h"

namespace kv::polarization {
namespace {

constexpr double kChartDolp = 0.2;
constexpr int kPointsADecade = 8;
constexpr int kDecades = 3;

struct Compared {
  StokesErrors before;
  StokesErrors after;
  StokesErrors noise;  ///< what a perfect calibration would leave
};

class Comparison {
 public:
  Comparison(const Calibration& calibration, const PropertySamples& samples)
      : noise_(calibration.noise),
        before_(uncalibrated(calibration)),
        after_(calibrated(calibration, samples)) {
    perfect_.diattenuation = after_.diattenuation;
    double black = 0;
    for (const PixelClass& pixels : calibration.classes) black += pixels.black.value / 4;
    largest_s0_ = calibration.clip_level - black;
  }

  /// Counts: at a DoLP of 1 the brightest pixel is at the clip level.
  double largest_s0() const { return largest_s0_; }

  Compared at(double s0, double dolp) const {
    return {errors_of(before_, noise_, s0, dolp), errors_of(after_, noise_, s0, dolp),
            errors_of(perfect_, noise_, s0, dolp)};
  }

 private:
  SensorNoise noise_;
  CellDeviations before_;
  CellDeviations after_;
  CellDeviations perfect_;
  double largest_s0_ = 0;
};

std::string arrow(double before, double after, std::string_view unit) {
  return with_unit(before, unit, 2) + " → " + with_unit(after, unit, 2);
}

void add_error_table(HtmlWriter& page, const Comparison& comparison) {
  Table table(page, {"S₀, counts", "of the range", "DoLP", "DoLP error, before → after",
                     "Angle error, before → after"});
  for (const double share : {1.0, 0.1, 0.01}) {
    for (const double dolp : {0.05, 0.3, 1.0}) {
      const double s0 = share * comparison.largest_s0();
      const Compared errors = comparison.at(s0, dolp);
      table.row({fixed(s0, 0), with_unit(100 * share, "%", share < 1 ? 1 : 3),
                 significant(dolp, dolp < 1 ? 1 : 2),
                 arrow(errors.before.dolp, errors.after.dolp, ""),
                 arrow(errors.before.angle, errors.after.angle, "°")});
    }
  }
}

void add_error_chart(HtmlWriter& page, const Comparison& comparison, double StokesErrors::*value,
                     const std::string& title) {
  std::array<std::vector<Point>, 3> lines;
  std::vector<double> sizes;
  std::vector<double> levels;
  for (int i = 0; i <= kDecades * kPointsADecade; ++i) {
    const double s0 =
        comparison.largest_s0() * std::pow(10, static_cast<double>(i) / kPointsADecade - kDecades);
    const Compared errors = comparison.at(s0, kChartDolp);
    const double values[] = {errors.before.*value, errors.after.*value, errors.noise.*value};
    levels.push_back(s0);
    for (std::size_t j = 0; j < lines.size(); ++j) {
      lines[j].push_back({s0, values[j]});
      sizes.push_back(values[j]);
    }
  }
  const auto figure = page.open("figure");
  Chart chart(page, title + " against S0, before and after calibration",
              decade_axis("S₀, counts", levels), decade_axis(title, sizes));
  chart.line(lines[2], "noise");
  chart.line(lines[0], "before");
  chart.line(lines[1], "after");
}

void add_key(HtmlWriter& page) {
  const auto key = page.open("p", {{"class", "key"}});
  for (const auto& [style, name] :
       {std::pair("before", "before calibration"), std::pair("after", "after calibration"),
        std::pair("noise", "noise alone, which no calibration takes off")}) {
    const auto entry = page.open("span");
    {
      const auto svg = page.open("svg", {{"viewBox", "0 0 30 10"}, {"aria-hidden", "true"}});
      page.empty("path", {{"d", "M1 5L29 5"}, {"class", std::string("line ") + style}});
    }
    page.text(name);
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
  page.element("p", "δDoLP = Σ (c / D − p / 2) δx,     δφ = Σ s δx / (2 p D).",
               {{"class", "formula"}});
  page.element("p",
               "Before: D = 1, and the deviations of pixels from ideal ones, which are those of "
               "the mean of their class, the same for all, and the scatter within it, each pixel "
               "on its own. After: D the mean of the sensor, and the errors of the maps, each "
               "pixel on its own. Both have the noise of the samples, of variance K x + σ² over S₀ "
               "squared, with K the gain in counts per electron, x the sample and σ² the variance "
               "in the dark. Errors are root mean squares over all angles φ; those of the angle "
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
  const Compared bright = comparison.at(comparison.largest_s0(), kChartDolp);
  page.element(
      "p", "In bright light of DoLP " + fixed(kChartDolp, 1) +
               ", the error of DoLP in one 2×2 neighbourhood goes from " +
               arrow(bright.before.dolp, bright.after.dolp, "") + ", and that of the angle from " +
               arrow(bright.before.angle, bright.after.angle, "°") + ". Noise alone makes " +
               significant(bright.noise.dolp, 2) + " and " + with_unit(bright.noise.angle, "°", 2) +
               "; means over regions take noise down, but not what the pixels of a class "
               "have in common.");
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

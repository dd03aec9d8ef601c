// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cmath>
#include <limits>

#include "toolkit/calibration/report/chart.h"
#include "toolkit/calibration/report/number_text.h"
#include "toolkit/calibration/report/sections.h"

namespace kv::polarization {
namespace {

/// What the pixels of a property are shown against: maps of orientation hold deviations already.
struct Shown {
  double reference;
  std::string_view heading;
  std::string_view axis;
};
constexpr std::array<Shown, 3> kShown{{
    {1, "Gain, deviation from the mean of all pixels", "%"},
    {0, "Diattenuation", "diattenuation"},
    {0, "Orientation, deviation from the nominal angle", "degrees"},
}};

constexpr std::size_t kBins = 60;
constexpr double kShownScatters = 4;
constexpr int kCurvePoints = 80;

/// In the property's unit, deviations from a reference.
struct HistogramRange {
  double low = std::numeric_limits<double>::infinity();
  double high = -std::numeric_limits<double>::infinity();
};

/// One for all classes, so that they compare.
HistogramRange range_of(const PixelProperty& property, const std::array<PropertySample, 4>& samples,
                        double reference) {
  HistogramRange range;
  for (const PropertySample& sample : samples) {
    if (sample.values.empty()) continue;
    const double middle = property.scale * (sample.mean - reference);
    const double reach = property.scale * kShownScatters * std::max(sample.scatter, sample.noise);
    range.low = std::min(range.low, middle - reach);
    range.high = std::max(range.high, middle + reach);
  }
  return range;
}

/// Outlines of the bars, as shares of the class.
std::vector<Point> bars_of(const PixelProperty& property, const PropertySample& sample,
                           double reference, const Axis& axis) {
  std::array<double, kBins> shares{};
  const double bin = (axis.high - axis.low) / kBins;
  for (const float value : sample.values) {
    const double place = (property.scale * (value - reference) - axis.low) / bin;
    if (!(place >= 0 && place < kBins)) continue;
    shares[static_cast<std::size_t>(place)] += 100 / static_cast<double>(sample.values.size());
  }
  std::vector<Point> points{{axis.low, 0}};
  for (std::size_t i = 0; i < kBins; ++i) {
    const double left = axis.low + bin * static_cast<double>(i);
    points.push_back({left, shares[i]});
    points.push_back({left + bin, shares[i]});
  }
  points.push_back({axis.high, 0});
  return points;
}

std::vector<Point> noise_curve(const PixelProperty& property, const PropertySample& sample,
                               double reference, const Axis& axis, double peak) {
  std::vector<Point> points;
  const double middle = property.scale * (sample.mean - reference);
  const double sigma = property.scale * sample.noise;
  if (!(sigma > 0)) return points;
  for (int i = 0; i <= kCurvePoints; ++i) {
    const double away = kShownScatters * (2.0 * i / kCurvePoints - 1);
    const double x = middle + sigma * away;
    if (x < axis.low || x > axis.high) continue;
    points.push_back({x, peak * std::exp(-away * away / 2)});
  }
  return points;
}

std::string share_of_noise(const PropertySample& sample) {
  if (!(sample.scatter > 0)) return "no scatter";
  const double share = sample.noise * sample.noise / (sample.scatter * sample.scatter);
  return share < 1 ? percentage(share) : "all of it";
}

std::string caption_of(const PixelProperty& property, const PropertySample& sample) {
  return "Scatter " + with_unit(property.scale * sample.scatter, property.unit) + ", errors " +
         with_unit(property.scale * sample.noise, property.unit) +
         "; explained by noise: " + share_of_noise(sample);
}

void add_histogram(HtmlWriter& page, const PixelProperty& property, const PropertySample& sample,
                   const Shown& shown, const HistogramRange& range, std::string_view class_name) {
  const auto figure = page.open("figure");
  const double ends[] = {range.low, range.high};
  Axis horizontal = linear_axis(std::string(shown.axis), ends, 1e-6);
  const std::vector<Point> bars = bars_of(property, sample, shown.reference, horizontal);
  std::vector<double> shares;
  shares.reserve(bars.size());
  for (const Point& point : bars) shares.push_back(point.y);
  const double peak = *std::max_element(shares.begin(), shares.end());
  {
    const std::string title = std::string(class_name) + ": % of pixels";
    Chart chart(page, std::string(property.name) + " of pixels at " + title, horizontal,
                linear_axis(title, shares, 1e-3));
    chart.area(bars, "bars");
    chart.line(noise_curve(property, sample, shown.reference, horizontal, peak), "noise");
  }
  page.element("figcaption", caption_of(property, sample));
}

}  // namespace

void add_histograms(HtmlWriter& page, const PropertySamples& samples) {
  const auto section = page.open("section");
  page.element("h2", "How pixels scatter");
  page.element("p",
               "Good pixels of each class. The dashed curve is as wide as the errors of the fit "
               "alone would make it, and drawn as high as the bars: where it is as wide as they "
               "are, what is seen is noise, and more frames would make a better calibration; where "
               "it is narrow, pixels truly differ, and a correction pixel by pixel pays. The share "
               "explained by noise is the mean square of the errors over the variance.");
  for (std::size_t i = 0; i < samples.size(); ++i) {
    page.element("h3", kShown[i].heading);
    const auto row = page.open("div", {{"class", "row four"}});
    const HistogramRange range = range_of(kPixelProperties[i], samples[i], kShown[i].reference);
    for (std::size_t j = 0; j < 4; ++j) {
      add_histogram(page, kPixelProperties[i], samples[i][j], kShown[i], range,
                    std::to_string(45 * j) + "°");
    }
  }
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/report/chart.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "toolkit/calibration/report/number_text.h"

namespace kv::polarization {
namespace {

// In units of the SVG, which are about a pixel each on a phone.
constexpr double kWidth = 340;
constexpr double kHeight = 220;
constexpr double kLeft = 52;
constexpr double kRight = 330;
constexpr double kTop = 26;
constexpr double kBottom = 178;
constexpr double kCrossArm = 3.5;

constexpr double kLongestDecades = 10;
constexpr double kEndsATick = 5;    ///< places between two ticks where an axis can end
constexpr double kSlack = 1e-9;     ///< for quotients that should be whole
constexpr double kLargest = 1e100;  ///< that an axis goes to, so that differences stay finite

struct Range {
  double low = std::numeric_limits<double>::infinity();
  double high = -std::numeric_limits<double>::infinity();
};

Range range_of(std::span<const double> values, double above) {
  Range range;
  for (const double value : values) {
    if (!(std::abs(value) <= kLargest) || value <= above) continue;
    range.low = std::min(range.low, value);
    range.high = std::max(range.high, value);
  }
  return range;
}

/// 1, 2 or 5 times a power of ten, so that some five of them make the length.
double tick_distance(double length) {
  const double rough = length / 5;
  const double decade = std::pow(10, std::floor(std::log10(rough)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (factor * decade >= rough) return factor * decade;
  }
  return 10 * decade;
}

/// 1, 2 or 5 times a power of ten, three a decade: 0 is 1, 4 is 20, -1 is 0.5.
double round_number(int third) {
  const int decade = static_cast<int>(std::floor(third / 3.0));
  constexpr double factors[] = {1, 2, 5};
  return factors[third - 3 * decade] * std::pow(10, decade);
}

/// The largest round number up to the value.
int third_below(double value) {
  int third = 3 * static_cast<int>(std::floor(std::log10(value)));
  while (round_number(third + 1) <= value * (1 + kSlack)) ++third;
  return third;
}

}  // namespace

double Axis::place(double value) const {
  const double share =
      logarithmic ? std::log(value / low) / std::log(high / low) : (value - low) / (high - low);
  return share > 0 ? std::min(share, 1.0) : 0;
}

Axis linear_axis(std::string title, std::span<const double> values, double smallest_range) {
  Range range = range_of(values, -std::numeric_limits<double>::infinity());
  if (range.low > range.high) range = {0, 0};
  // Of numbers that large their differences are rounding.
  const double least = std::max(smallest_range, 1e-9 * std::max(-range.low, range.high));
  if (!(range.high - range.low >= least)) {
    const double middle = range.low / 2 + range.high / 2;
    range = {middle - least / 2, middle + least / 2};
  }
  const double step = tick_distance(range.high - range.low);
  const double end_step = step / kEndsATick;
  Axis axis{std::move(title),
            end_step * std::floor(range.low / end_step + kSlack),
            end_step * std::ceil(range.high / end_step - kSlack),
            false,
            {}};
  const double first = std::ceil(axis.low / step - kSlack);
  const double last = std::floor(axis.high / step + kSlack);
  const int decimals =
      static_cast<int>(std::clamp(-std::floor(std::log10(step) + kSlack), 0.0, 9.0));
  const int ticks = static_cast<int>(last - first);
  for (int i = 0; i <= ticks; ++i) {
    const double value = step * (first + i);
    axis.ticks.push_back({value, step < 1e6 ? fixed(value, decimals) : significant(value, 2)});
  }
  return axis;
}

Axis logarithmic_axis(std::string title, std::span<const double> values) {
  Range range = range_of(values, 0);
  if (range.low > range.high) range = {1, 10};
  range.low = std::max(range.low, range.high / std::pow(10, kLongestDecades));
  // In thirds of a decade, which begin at 1, 2 and 5.
  const int first = third_below(range.low);
  int last = third_below(range.high);
  if (last == first || round_number(last) < range.high * (1 - kSlack)) ++last;
  Axis axis{std::move(title), round_number(first), round_number(last), true, {}};
  const bool decades_alone = last - first > 7;
  for (int third = first; third <= last; ++third) {
    if (decades_alone && third % 3 != 0) continue;
    axis.ticks.push_back({round_number(third), significant(round_number(third), 1)});
  }
  return axis;
}

Chart::Chart(HtmlWriter& page, std::string_view description, Axis horizontal, Axis vertical)
    : page_(page),
      svg_(page.open("svg", {{"viewBox", "0 0 " + coordinate(kWidth) + " " + coordinate(kHeight)},
                             {"role", "img"},
                             {"aria-label", std::string(description)}})),
      horizontal_(std::move(horizontal)),
      vertical_(std::move(vertical)) {
  draw_axes();
}

double Chart::left_of(double x) const { return kLeft + horizontal_.place(x) * (kRight - kLeft); }

double Chart::top_of(double y) const { return kBottom - vertical_.place(y) * (kBottom - kTop); }

void Chart::draw_axes() {
  const auto rule = [this](double x1, double y1, double x2, double y2, std::string_view style) {
    page_.empty("line", {{"x1", coordinate(x1)},
                         {"y1", coordinate(y1)},
                         {"x2", coordinate(x2)},
                         {"y2", coordinate(y2)},
                         {"class", std::string(style)}});
  };
  const auto label = [this](double x, double y, std::string_view style, std::string_view text) {
    page_.element("text", text,
                  {{"x", coordinate(x)}, {"y", coordinate(y)}, {"class", std::string(style)}});
  };
  for (const Tick& tick : vertical_.ticks) {
    const double y = top_of(tick.value);
    rule(kLeft, y, kRight, y, "grid");
    label(kLeft - 5, y + 4, "end", tick.text);
  }
  for (const Tick& tick : horizontal_.ticks) {
    const double x = left_of(tick.value);
    rule(x, kBottom, x, kBottom + 4, "axis");
    label(x, kBottom + 17, "middle", tick.text);
  }
  rule(kLeft, kBottom, kRight, kBottom, "axis");
  label(2, 13, "title", vertical_.title);
  label((kLeft + kRight) / 2, kHeight - 7, "middle title", horizontal_.title);
}

std::string Chart::path_through(std::span<const Point> points) const {
  std::string path;
  for (const Point& point : points) {
    if (!std::isfinite(point.x) || !std::isfinite(point.y)) continue;
    path += (path.empty() ? "M" : "L") + coordinate(left_of(point.x)) + " " +
            coordinate(top_of(point.y));
  }
  return path;
}

void Chart::line(std::span<const Point> points, std::string_view style) {
  page_.empty("path", {{"d", path_through(points)}, {"class", "line " + std::string(style)}});
}

void Chart::area(std::span<const Point> points, std::string_view style) {
  page_.empty("path", {{"d", path_through(points)}, {"class", std::string(style)}});
}

void Chart::dot(const Point& point, std::string_view style) {
  if (!std::isfinite(point.x) || !std::isfinite(point.y)) return;
  page_.empty("circle", {{"cx", coordinate(left_of(point.x))},
                         {"cy", coordinate(top_of(point.y))},
                         {"r", "3"},
                         {"class", std::string(style)}});
}

void Chart::cross(const Point& point, std::string_view style) {
  if (!std::isfinite(point.x) || !std::isfinite(point.y)) return;
  const double x = left_of(point.x);
  const double y = top_of(point.y);
  std::string path;
  for (const double slope : {-1.0, 1.0}) {
    path += "M" + coordinate(x - kCrossArm) + " " + coordinate(y - slope * kCrossArm) + "L" +
            coordinate(x + kCrossArm) + " " + coordinate(y + slope * kCrossArm);
  }
  page_.empty("path", {{"d", path}, {"class", "line " + std::string(style)}});
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/calibration/report/html_writer.h"

namespace kv::polarization {

struct Tick {
  double value = 0;
  std::string text;
};

/// The range of a chart in one direction.
struct Axis {
  std::string title;
  double low = 0;
  double high = 1;
  bool logarithmic = false;
  std::vector<Tick> ticks;

  /// From 0, the low end, to 1. Values outside, and those that are not finite, are bounded.
  double place(double value) const;
};

/// Takes all finite values in, with ticks at round numbers, and ends at fifths
/// between them. Values that hardly differ get
/// a range of `smallest_range` about them.
Axis linear_axis(std::string title, std::span<const double> values, double smallest_range);

/// Takes all finite values above 0 in, up to ten decades, with ends at 1, 2 or 5 times a power of
/// ten.
Axis logarithmic_axis(std::string title, std::span<const double> values);

struct Point {
  double x = 0;
  double y = 0;
};

/// A chart in SVG, which is as wide as its place. Its colours are those of the page: `style` names
/// a class of its style sheet. Points that are not finite are left out.
class Chart {
 public:
  /// The description is for those who cannot see it.
  Chart(HtmlWriter& page, std::string_view description, Axis horizontal, Axis vertical);

  void line(std::span<const Point> points, std::string_view style);
  void area(std::span<const Point> points, std::string_view style);
  void dot(const Point& point, std::string_view style);
  void cross(const Point& point, std::string_view style);

 private:
  void draw_axes();
  std::string path_through(std::span<const Point> points) const;
  double left_of(double x) const;
  double top_of(double y) const;

  HtmlWriter& page_;
  HtmlWriter::Element svg_;
  Axis horizontal_;
  Axis vertical_;
};

}  // namespace kv::polarization

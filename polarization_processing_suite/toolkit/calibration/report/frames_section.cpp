// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cmath>

#include "toolkit/calibration/report/chart.h"
#include "toolkit/calibration/report/number_text.h"
#include "toolkit/calibration/report/sections.h"

namespace kv::polarization {
namespace {

std::string_view kind_name(FrameKind kind) {
  switch (kind) {
    case FrameKind::dark:
      return "dark";
    case FrameKind::flat:
      return "flat";
    default:
      return "polarized";
  }
}

/// A number of each frame, against its angle.
struct FrameChart {
  double FrameRecord::*value;
  std::string_view title;
  double smallest_range;
  std::string_view caption;
};
constexpr std::array<FrameChart, 3> kFrameCharts{{
    {&FrameRecord::level, "Level, counts above black", 1,
     "A steady source has one level; slow drifts of it are harmless, as each frame's level is its "
     "own."},
    {&FrameRecord::angle_deviation, "Angle deviation, °", 0.001,
     "Of the frame's light from the angle as given. A wave of one or two periods in a turn tells "
     "of a wobbling mount; a single point that stands out, of a wrong angle."},
    {&FrameRecord::excess, "Excess: deviation from the model / noise", 0.1,
     "1 is noise alone. Frames far above hold light that is not uniform, stray light, or moved."},
}};

void add_chart(HtmlWriter& page, const std::vector<const FrameRecord*>& frames,
               const FrameChart& shown) {
  const auto figure = page.open("figure");
  {
    std::vector<double> angles;
    std::vector<double> values;
    const bool any_used = std::any_of(frames.begin(), frames.end(),
                                      [](const FrameRecord* frame) { return frame->used; });
    for (const FrameRecord* frame : frames) {
      angles.push_back(frame->angle);
      // A refused frame far away would press all others into a line.
      if (frame->used || !any_used) values.push_back(frame->*shown.value);
    }
    Chart chart(page, std::string(shown.title) + " of each frame against its angle",
                linear_axis("Polarizer, °", angles, 1),
                linear_axis(std::string(shown.title), values, shown.smallest_range));
    for (const FrameRecord* frame : frames) {
      const Point point{frame->angle, frame->*shown.value};
      if (frame->used) {
        chart.dot(point, "used");
      } else {
        chart.cross(point, "refused");
      }
    }
  }
  page.element("figcaption", shown.caption);
}

void add_charts(HtmlWriter& page, const Calibration& calibration) {
  std::vector<const FrameRecord*> polarized;
  for (const FrameRecord& frame : calibration.frames) {
    if (frame.kind == FrameKind::polarized) polarized.push_back(&frame);
  }
  if (polarized.empty()) return page.element("p", "There are none behind a polarizer to plot.");
  page.element(
      "p",
      "Frames behind the polarizer: dots were used, crosses refused. Crosses at the upper or "
      "lower rim lie beyond it.");
  const auto row = page.open("div", {{"class", "row three"}});
  for (const FrameChart& chart : kFrameCharts) add_chart(page, polarized, chart);
}

std::string in_degrees(double angle, int decimals) {
  return fixed(angle, decimals) + (std::isfinite(angle) ? "°" : "");
}

void add_frame(HtmlWriter& page, const FrameRecord& frame) {
  const auto row = page.open("tr", {{"class", frame.used ? "good" : "bad"}});
  page.element("td", frame.used ? "✓ used" : "✗ refused", {{"class", "mark"}});
  {
    const auto name = page.open("th", {{"scope", "row"}, {"class", "words"}});
    page.foreign(frame.name);
  }
  const bool polarized = frame.kind == FrameKind::polarized;
  page.element("td", kind_name(frame.kind));
  page.element("td", polarized ? in_degrees(frame.angle, 2) : "");
  page.element("td", fixed(frame.level, frame.level < 100 ? 2 : 0));
  page.element("td", polarized ? in_degrees(frame.angle_deviation, 3) : "");
  page.element("td", fixed(frame.excess, 2));
  const auto reason = page.open("td", {{"class", "words"}});
  if (!frame.used) page.foreign(frame.refusal.empty() ? "no reason was kept" : frame.refusal);
}

}  // namespace

void add_frames(HtmlWriter& page, const Calibration& calibration) {
  const auto section = page.open("section");
  page.element("h2", "Frames");
  add_charts(page, calibration);
  std::vector<const FrameRecord*> frames;
  for (const FrameRecord& frame : calibration.frames) frames.push_back(&frame);
  std::stable_partition(frames.begin(), frames.end(),
                        [](const FrameRecord* frame) { return !frame->used; });
  const auto part = page.open("div", {{"class", "wide long"}});
  const auto table = page.open("table", {{"class", "frames"}});
  add_headings(page, {"Mark", "Frame", "Kind", "Polarizer", "Level, counts", "Deviation", "Excess",
                      "Why refused"});
  for (const FrameRecord* frame : frames) add_frame(page, *frame);
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>

#include "toolkit/calibration/report/number_text.h"
#include "toolkit/calibration/report/sections.h"

namespace kv::polarization {
namespace {

std::size_t failed_count(const Calibration& calibration) {
  return static_cast<std::size_t>(
      std::count_if(calibration.findings.begin(), calibration.findings.end(),
                    [](const Finding& finding) { return !finding.good; }));
}

std::string verdict_of(const Calibration& calibration) {
  const std::size_t all = calibration.findings.size();
  const std::size_t failed = failed_count(calibration);
  if (all == 0) return "Unproven: the calibration has no findings, nothing was checked.";
  if (failed == 0) {
    return "Good: " +
           (all == 1 ? "the one finding is" : "all " + count_text(all) + " findings are") +
           " as expected.";
  }
  std::string names;
  for (const Finding& finding : calibration.findings) {
    if (!finding.good) names += (names.empty() ? "" : "; ") + shortened(finding.name);
  }
  return "Not good: " + count_text(failed) + " of " + counted(all, "finding") +
         (failed == 1 ? " is" : " are") + " not as expected: " + shortened(names) + ".";
}

std::string phase_text(const Mosaic& mosaic) {
  const CellAngles cell = cell_angles(mosaic.phase);
  const auto degrees = [&cell](std::size_t place) { return std::to_string(cell[place]) + "°"; };
  return degrees(0) + " at the sensor's top left, with " + degrees(1) + " on its right, " +
         degrees(2) + " below and " + degrees(3) + " diagonally";
}

std::string frames_text(const Calibration& calibration) {
  const auto used =
      static_cast<std::size_t>(std::count_if(calibration.frames.begin(), calibration.frames.end(),
                                             [](const FrameRecord& frame) { return frame.used; }));
  return count_text(used) + " used, " + count_text(calibration.frames.size() - used) + " refused";
}

std::string bad_pixels_text(const Calibration& calibration) {
  const Buffer<std::uint8_t>& bad = calibration.maps.bad;
  const auto good = static_cast<std::size_t>(std::count(bad.begin(), bad.end(), 0));
  const std::size_t count = bad.size() - good;
  return count_text(count) + ", " +
         percentage(static_cast<double>(count) / static_cast<double>(bad.size()));
}

std::string angles_text(const Calibration& calibration) {
  return (calibration.angles_solved ? "found by the fit, but for one"
                                    : "taken as they were given") +
         std::string("; the source's zero lies ") + with_unit(calibration.source_offset, "°", 4) +
         " counter-clockwise of the sensor's";
}

class Facts {
 public:
  explicit Facts(HtmlWriter& page) : page_(page), list_(page.open("dl")) {}

  void add(std::string_view name, std::string_view value) {
    page_.element("dt", name);
    const auto place = page_.open("dd");
    page_.foreign(value.empty() ? "not given" : value);
  }

 private:
  HtmlWriter& page_;
  HtmlWriter::Element list_;
};

}  // namespace

void add_summary(HtmlWriter& page, const Calibration& calibration) {
  const bool good = !calibration.findings.empty() && failed_count(calibration) == 0;
  page.element("h1", "Calibration of a polarization camera");
  {
    const auto verdict = page.open("p", {{"class", good ? "verdict good" : "verdict bad"}});
    page.element("span", good ? "✓ " : "✗ ", {{"class", "mark"}});
    page.foreign(verdict_of(calibration));
  }
  Facts facts(page);
  facts.add("Camera", calibration.camera);
  facts.add("Date", calibration.date);
  facts.add("Software", calibration.software);
  facts.add("Size", count_text(static_cast<std::uint64_t>(calibration.width)) + " × " +
                        count_text(static_cast<std::uint64_t>(calibration.height)) + " pixels");
  facts.add("Origin", "column " + std::to_string(calibration.mosaic.x_origin) + ", row " +
                          std::to_string(calibration.mosaic.y_origin) + " of the sensor");
  facts.add("Polarizers", phase_text(calibration.mosaic));
  facts.add("Samples", std::to_string(calibration.bit_depth) + " bits, clipped at " +
                           count_text(calibration.clip_level) + " counts");
  facts.add("Frames", frames_text(calibration));
  facts.add("Bad pixels", bad_pixels_text(calibration));
  facts.add("Angles", angles_text(calibration));
  facts.add("Source's DoLP", "taken for " + significant(calibration.source_dolp, 5));
}

void add_findings(HtmlWriter& page, const Calibration& calibration) {
  const auto section = page.open("section");
  page.element("h2", "Findings");
  page.element("p",
               "Each line holds what was found against what the noise of the samples alone would "
               "give.");
  if (calibration.findings.empty()) return page.element("p", "There are none.");
  const auto frame = page.open("div", {{"class", "wide"}});
  const auto table = page.open("table", {{"class", "findings"}});
  add_headings(page, {"Mark", "Finding", "Found", "Expected from noise", "Verdict"});
  for (const Finding& finding : calibration.findings) {
    const std::string unit = shortened(finding.unit);
    const auto row = page.open("tr", {{"class", finding.good ? "good" : "bad"}});
    page.element("td", finding.good ? "✓ good" : "✗ not good", {{"class", "mark"}});
    {
      const auto name = page.open("th", {{"scope", "row"}});
      page.foreign(finding.name);
    }
    page.element("td", with_unit(finding.found, unit), {{"data-label", "found "}});
    const std::string expected = finding.expected == 0 ? "–" : with_unit(finding.expected, unit);
    page.element("td", expected, {{"data-label", "expected "}});
    const auto verdict = page.open("td", {{"class", "words"}});
    page.foreign(finding.verdict);
  }
}

}  // namespace kv::polarization

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cmath>
#include <numbers>

#include "toolkit/calibration/report/number_text.h"
#include "toolkit/calibration/report/sections.h"

namespace kv::polarization {
namespace {

std::string class_name(const PixelClass& pixels) {
  return std::to_string(pixels.nominal_angle) + "°";
}

double extinction_ratio(double diattenuation) { return (1 + diattenuation) / (1 - diattenuation); }

/// Of diattenuations within so much of the mean.
std::string extinction_interval(double diattenuation, double margin) {
  if (!std::isfinite(diattenuation) || !std::isfinite(margin)) return "unknown";
  const std::string low = significant(extinction_ratio(diattenuation - margin), 3);
  if (diattenuation - margin >= 1) return "not limited by these data";
  if (diattenuation + margin >= 1) return "above " + low;
  return low + " to " + significant(extinction_ratio(diattenuation + margin), 3);
}

std::string condition_text(double condition) {
  if (!std::isfinite(condition) || !(condition > 0)) return "The condition number is unknown.";
  return "The condition number of the mean measured analyser matrix is " + fixed(condition, 4) +
         "; four ideal polarizers have √2 = 1.4142. In the "
         "worst case, relative errors of the samples come out as so many times larger relative "
         "errors of the Stokes values: this sensor's polarizers cost up to " +
         percentage(std::max(condition / std::numbers::sqrt2 - 1, 0.0)) +
         " of precision against ideal ones.";
}

void add_extinction(HtmlWriter& page, const Calibration& calibration) {
  page.element("h3", "Extinction ratio");
  page.element("p",
               "(1 + D) / (1 − D) of the diattenuation D, as an interval: a small error of D near "
               "1 is a large one of the ratio. Diattenuations are relative to the source's DoLP, "
               "which was taken for " +
                   significant(calibration.source_dolp, 5) +
                   ". The source's own extinction limits what can be told: where its light is "
                   "less polarized than was taken, the true ratios are higher than these.");
  Table table(page, {"Class", "Mean, D ± 2 errors", "Pixels, D ± 2 scatters"});
  for (const PixelClass& pixels : calibration.classes) {
    const double mean = pixels.diattenuation.value;
    table.row({class_name(pixels), extinction_interval(mean, 2 * pixels.diattenuation.error),
               extinction_interval(mean, 2 * pixels.diattenuation_scatter)});
  }
}

}  // namespace

void add_classes(HtmlWriter& page, const Calibration& calibration) {
  const auto section = page.open("section");
  page.element("h2", "The four classes of pixels");
  page.element("p",
               "Means over the good pixels of each class with their standard errors, and how far "
               "pixels scatter about them, the noise of the fit taken off.");
  {
    Table table(page, {"Class", "Good pixels", "Gain", "scatter", "Diattenuation", "scatter",
                       "Orientation", "scatter"});
    for (const PixelClass& pixels : calibration.classes) {
      table.row({class_name(pixels), count_text(pixels.pixels), with_error(pixels.gain),
                 percentage(pixels.gain_scatter), with_error(pixels.diattenuation),
                 significant(pixels.diattenuation_scatter, 2), with_error(pixels.orientation, "°"),
                 with_unit(pixels.orientation_scatter, "°", 2)});
    }
  }
  page.element("p", condition_text(calibration.condition));
  add_extinction(page, calibration);
}

}  // namespace kv::polarization

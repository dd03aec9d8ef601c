// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cmath>

#include "toolkit/calibration/report/number_text.h"
#include "toolkit/calibration/report/sections.h"

namespace kv::polarization {
namespace {

/// Of numbers whose error is not known, three digits are enough.
std::string whole_number(double value) {
  const double step = std::pow(10, std::max(0.0, std::floor(std::log10(std::max(value, 1.0))) - 2));
  return fixed(step * std::round(value / step), 0);
}

double mean_black(const Calibration& calibration) {
  double sum = 0;
  for (const PixelClass& pixels : calibration.classes) sum += pixels.black.value;
  return sum / 4;
}

std::string capacity_text(const Calibration& calibration, double range) {
  const SensorNoise& noise = calibration.noise;
  const double gain = noise.gain;
  const double read = std::sqrt(static_cast<double>(noise.dark_variance())) / gain;
  const double capacity = range / gain;
  if (!(gain > 0) || !(range > 0) || !std::isfinite(capacity) || !(read > 0)) {
    return "Without a gain above 0, and a clip level above black, nothing can be told of the full "
           "well.";
  }
  return "A sample clips at " + whole_number(capacity) +
         " electrons: the full well at this camera's setting. There its signal to noise ratio is "
         "best, " +
         fixed(range / std::sqrt(static_cast<double>(noise.variance(static_cast<float>(range)))),
               0) +
         "; against the noise in the dark its range is " + whole_number(capacity / read) +
         " to 1, " + fixed(20 * std::log10(capacity / read), 1) + " dB. Above " +
         significant(static_cast<double>(noise.dark_variance()) / gain, 2) +
         " counts, light's own noise is larger than that of the readout.";
}

void add_levels(HtmlWriter& page, const SensorNoise& noise, double range) {
  Table table(page,
              {"Sample above black", "counts", "electrons", "noise, counts", "signal to noise"});
  for (const double share : {1.0, 0.5, 0.1, 0.01}) {
    const double counts = share * range;
    const double scatter =
        std::sqrt(static_cast<double>(noise.variance(static_cast<float>(counts))));
    table.row({percentage(share, share < 1 ? 1 : 3) + " of the range", fixed(counts, 0),
               whole_number(counts / noise.gain), significant(scatter),
               significant(counts / scatter)});
  }
}

}  // namespace

void add_noise(HtmlWriter& page, const Calibration& calibration) {
  const SensorNoise& noise = calibration.noise;
  const double range = calibration.clip_level - mean_black(calibration);
  const auto section = page.open("section");
  page.element("h2", "Noise");
  page.element("p", "Gain " + with_unit(noise.gain, "counts per electron") + ", that is " +
                        with_unit(1.0 / noise.gain, "electrons per count") + "; read noise " +
                        with_unit(noise.read_noise, "electrons") +
                        ". A sample scatters in the dark by " +
                        with_unit(std::sqrt(static_cast<double>(noise.dark_variance())), "counts") +
                        ", rounding to whole counts included.");
  page.element("p", capacity_text(calibration, range));
  if (noise.gain > 0 && range > 0) add_levels(page, noise, range);
  page.element("h3", "Black level");
  Table table(page, {"Class", "Black level"});
  for (const PixelClass& pixels : calibration.classes) {
    table.row({std::to_string(pixels.nominal_angle) + "°", with_error(pixels.black, "counts")});
  }
}

}  // namespace kv::polarization

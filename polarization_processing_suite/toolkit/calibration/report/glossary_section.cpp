// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <array>
#include <utility>

#include "toolkit/calibration/report/sections.h"

namespace kv::polarization {
namespace {

using Entry = std::pair<std::string_view, std::string_view>;

constexpr std::array<Entry, 11> kGlossary{{
    {"Angle",
     "In degrees: 0 along the rows of the sensor, growing counter-clockwise as the image is seen. "
     "The sensor's own zero is such that the mean deviation of all good pixels from their nominal "
     "angle is 0."},
    {"Counts", "Units of a sample, as the camera gives it. Levels are above black."},
    {"S₀, S₁, S₂",
     "Stokes values in counts. Of a pixel that reads x behind its polarizer, "
     "x = G / 2 (S₀ + D cos(2a) S₁ + D sin(2a) S₂)."},
    {"DoLP", "Degree of linear polarization, from 0 to 1: √(S₁² + S₂²) / S₀."},
    {"Gain, G", "How much a pixel reads of the same light, relative to the mean of all good ones."},
    {"Diattenuation, D",
     "How well its polarizer blocks: 1 is perfect, 0 is none. Relative to the source's DoLP."},
    {"Orientation, a", "The angle of light that a pixel lets through best."},
    {"Extinction ratio",
     "What a pixel lets through of light along its orientation over that across it."},
    {"Error", "Standard error by the noise of the frames that were used."},
    {"Scatter", "Standard deviation from pixel to pixel."},
    {"Condition number",
     "The largest over the smallest singular value of the matrix that makes the four samples of "
     "the three Stokes values."},
}};

}  // namespace

void add_glossary(HtmlWriter& page) {
  const auto section = page.open("section");
  page.element("h2", "Terms and units");
  const auto list = page.open("dl");
  for (const auto& [term, meaning] : kGlossary) {
    page.element("dt", term);
    page.element("dd", meaning);
  }
}

}  // namespace kv::polarization

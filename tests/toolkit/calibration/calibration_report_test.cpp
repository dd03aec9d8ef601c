// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <limits>
#include <numbers>
#include <regex>

#include "error_of.h"
#include "kv/calibration/report.h"
#include "made_up_calibration.h"
#include "temporary_folder.h"
#include "toolkit/calibration/report/html_writer.h"
#include "toolkit/calibration/report/indexed_image.h"
#include "toolkit/calibration/report/map_pictures.h"
#include "toolkit/calibration/report/measurement_errors.h"
#include "toolkit/calibration/report/number_text.h"

using namespace kv::polarization;

namespace {

int count_of(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size())
    ++count;
  return count;
}

/// Every element but those without content is ended, in turn.
void expect_balanced(const std::string& page) {
  std::vector<std::string> open;
  const std::regex tag("<(/?)([a-z0-9]+)[^>]*?(/?)>");
  for (std::sregex_iterator at(page.begin(), page.end(), tag), end; at != end; ++at) {
    const std::string name = (*at)[2];
    if ((*at)[1].length() > 0) {
      ASSERT_FALSE(open.empty()) << name;
      ASSERT_EQ(open.back(), name);
      open.pop_back();
    } else if ((*at)[3].length() == 0) {
      open.push_back(name);
    }
  }
  EXPECT_TRUE(open.empty());
}

TEST(CalibrationReport, ShowsTextsOfOthersAsTheyAre) {
  const std::string hostile = "</td><script src='http://evil/x.js'>&amp;\"\x01";
  const std::string shown =
      "&lt;/td&gt;&lt;script src=&#39;http://evil/x.js&#39;&gt;&amp;amp;&quot;\uFFFD";
  Calibration made = made_up_calibration(8, 6);
  made.camera = made.date = made.software = hostile;
  made.frames[3].name = made.frames[3].refusal = hostile;
  made.frames[3].used = false;
  made.findings[1] = {hostile, 1, 1, hostile, false, hostile};
  const std::string page = calibration_report(made);
  expect_balanced(page);
  EXPECT_EQ(count_of(page, hostile), 0);
  EXPECT_EQ(count_of(page, "<script"), 0);
  // Camera in title and list, date, software; name and reason of a frame; a finding's name in its
  // line and in the sentence, its verdict, and its unit behind two numbers.
  EXPECT_EQ(count_of(page, shown), 4 + 2 + 3 + 2);
}

TEST(CalibrationReport, AsksForNothingOutside) {
  const std::string page = calibration_report(made_up_calibration(64, 48));
  expect_balanced(page);
  for (const char* outside : {"http:", "https:", "url(", "@import", "<link", "<script", "href"}) {
    EXPECT_EQ(count_of(page, outside), 0) << outside;
  }
  EXPECT_EQ(count_of(page, "src=\""), count_of(page, "src=\"data:image/bmp;base64,"));
}

TEST(CalibrationReport, NamesEveryRefusedFrameAndFailedFinding) {
  Calibration made = made_up_calibration(8, 6);
  for (const std::size_t i : {0u, 7u, 35u}) {
    made.frames[i].used = false;
    made.frames[i].refusal = "refusal number " + std::to_string(i);
  }
  made.frames[9].kind = FrameKind::dark;
  const std::string good = calibration_report(made);
  EXPECT_PRED2(contains, good, "Good: all 2 findings are as expected.");
  EXPECT_PRED2(contains, good, "33 used, 3 refused");
  for (const char* reason : {"number 0<", "number 7<", "number 35<"}) {
    EXPECT_PRED2(contains, good, reason);
  }
  // Three charts of the 35 frames behind a polarizer.
  EXPECT_EQ(count_of(good, "class=\"used\""), 3 * 32);
  EXPECT_EQ(count_of(good, "class=\"line refused\""), 3 * 3);

  made.findings[1].good = false;
  EXPECT_PRED2(contains, calibration_report(made),
               "Not good: 1 of 2 findings is not as expected: angles of the frames.");
  made.findings.clear();
  EXPECT_PRED2(contains, calibration_report(made), "Unproven");
}

TEST(CalibrationReport, CountsBadPixelsByReason) {
  Calibration made = made_up_calibration(10, 10);
  made.maps.bad[3] = bad_pixel::noisy;
  made.maps.bad[4] = bad_pixel::noisy | bad_pixel::clipped;
  made.maps.bad[99] = bad_pixel::dark_defect;
  const std::string page = calibration_report(made);
  for (const char* row : {"any</th>\n<td>3<", "used</th>\n<td>1<", "noise</th>\n<td>2<",
                          "diattenuation or orientation far from those of its class</th>\n<td>0<",
                          "dark noise far from those of its class</th>\n<td>1<"}) {
    EXPECT_PRED2(contains, page, row);
  }
}

TEST(CalibrationReport, OutlastsNumbersThatAreNone) {
  constexpr float nan = std::numeric_limits<float>::quiet_NaN();
  constexpr float infinity = std::numeric_limits<float>::infinity();
  for (const float strange : {nan, infinity, -infinity, 0.0f, 3e38f}) {
    Calibration made = made_up_calibration(8, 6);
    for (auto map : {&PixelMaps::gain, &PixelMaps::diattenuation_error, &PixelMaps::orientation}) {
      std::fill((made.maps.*map).begin(), (made.maps.*map).end(), strange);
    }
    made.noise = {strange, strange};
    made.condition = made.source_offset = made.source_dolp = strange;
    made.frames[0].level = made.frames[1].angle = made.frames[2].excess = strange;
    made.findings[0].found = made.classes[2].gain.value = strange;
    made.classes[0].diattenuation = made.classes[1].black = {strange, strange};
    const std::string page = calibration_report(made);
    expect_balanced(page);
    const std::regex bare("[^a-z](nan|inf)[^a-z]");
    EXPECT_FALSE(std::regex_search(page, bare)) << strange;
  }
  Calibration made = made_up_calibration(2, 2);
  std::fill(made.maps.bad.begin(), made.maps.bad.end(), std::uint8_t{1});
  made.frames.clear();
  expect_balanced(calibration_report(made));
}

TEST(CalibrationReport, StaysSmallForLargeSensors) {
  // Both divide into as many blocks as there can be.
  for (const auto& [width, height] : {std::pair(960, 960), std::pair(2, 9000)}) {
    Calibration made = made_up_calibration(width, height);
    for (std::size_t i = 0; i < made.maps.bad.size(); i += 37) made.maps.bad[i] = 2;
    made.frames[0].name = std::string(5'000'000, 'x');
    EXPECT_LT(calibration_report(made).size(), 2'000'000u) << width << " x " << height;
  }
}

TEST(CalibrationReport, RefusesMapsOfOtherSizes) {
  const TemporaryFolder folder;
  Calibration made = made_up_calibration(8, 6);
  save_calibration_report(folder / "report.html", made);
  const std::string before = content_of(folder / "report.html");
  EXPECT_TRUE(before.ends_with("</html>\n"));
  made.maps.gain_error.resize(47);
  EXPECT_EQ(kind_of([&] { save_calibration_report(folder / "report.html", made); }),
            FaultKind::argument);
  made.width = 7;
  EXPECT_EQ(kind_of([&] { calibration_report(made); }), FaultKind::argument);
  EXPECT_EQ(content_of(folder / "report.html"), before);
}

TEST(CalibrationReport, RoundsToWhatTheErrorWarrants) {
  EXPECT_EQ(with_error({0.987654321, 0.000123}), "0.98765\u00A0±\u00A00.00012");
  EXPECT_EQ(with_error({-1234.5678, 0.52}, "°"), "\u22121234.57°\u00A0±\u00A00.52°");
  EXPECT_EQ(with_error({2.5, 0}, "counts"), "2.500\u00A0counts");
  EXPECT_EQ(fixed(-0.0004, 2), "0.00");
  EXPECT_EQ(significant(0.0012345), "0.00123");
  EXPECT_EQ(significant(9.96, 2), "10");
  EXPECT_EQ(significant(54321), "54321");
  EXPECT_EQ(count_text(5013504), "5\u202F013\u202F504");
  // A sign of three bytes is not cut.
  const std::string cut = shortened("a" + std::string(300, 'x') +
                                    std::string("€€€€€€€€€€€€€€€€€€€€€€"
                                                "€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€"));
  EXPECT_TRUE(cut.find("… €") != std::string::npos) << cut;
}

/// By random pixels of the exact model, evaluated as ideal ones.
TEST(MeasurementErrors, MeetThoseOfSimulatedPixels) {
  const Calibration made = made_up_calibration(2, 2);
  const CellDeviations deviations = uncalibrated(made);
  std::mt19937 random(3);
  std::normal_distribution<double> normal;
  std::uniform_real_distribution<double> turn(0, std::numbers::pi);
  constexpr double degree = std::numbers::pi / 180;
  for (const auto& [s0, dolp] :
       {std::pair(3000.0, 0.1), std::pair(300.0, 0.4), std::pair(3000.0, 1.0)}) {
    constexpr int trials = 40000;
    double dolp_square = 0, angle_square = 0;
    for (int trial = 0; trial < trials; ++trial) {
      const double angle = turn(random);
      double x[4];
      for (std::size_t i = 0; i < 4; ++i) {
        const PixelClass& of = made.classes[i];
        const double gain = of.gain.value + of.gain_scatter * normal(random);
        const double blocks = of.diattenuation.value + of.diattenuation_scatter * normal(random);
        const double at = (of.orientation.value + of.orientation_scatter * normal(random)) * degree;
        x[i] = gain / 2 * s0 * (1 + blocks * dolp * std::cos(2 * (at - angle)));
        x[i] += std::sqrt(0.37 * x[i] + 0.37 * 0.37 * 2.3 * 2.3 + 1.0 / 12) * normal(random);
      }
      const double s1 = x[0] - x[2], s2 = x[1] - x[3];
      const double dolp_error = 2 * std::hypot(s1, s2) / (x[0] + x[1] + x[2] + x[3]) - dolp;
      const double angle_error = std::remainder(std::atan2(s2, s1) / 2 - angle, std::numbers::pi);
      dolp_square += dolp_error * dolp_error / trials;
      angle_square += angle_error * angle_error / trials;
    }
    const StokesErrors errors = errors_of(deviations, made.noise, {s0, dolp});
    EXPECT_NEAR(errors.dolp / std::sqrt(dolp_square), 1, 0.04) << s0 << ", " << dolp;
    EXPECT_NEAR(errors.angle * degree / std::sqrt(angle_square), 1, 0.04) << s0 << ", " << dolp;
  }
}

/// A pixel that stands out is found at its place of its class, and a bad one is left out.
TEST(MapPictures, KeepPixelsAtTheirPlaces) {
  Calibration made = made_up_calibration(6, 4);
  std::fill(made.maps.gain.begin(), made.maps.gain.end(), 1.0f);
  // Column 5, row 2 is the upper right pixel of its cell: 45 degrees, as the phase is that of 90.
  made.maps.gain[2 * 6 + 5] = 1.06f;
  made.maps.gain[0] = 9;
  made.maps.bad[0] = bad_pixel::noisy;
  const PixelProperty& gain = kPixelProperties[0];
  const auto samples = samples_of(made, gain);
  const auto maps = reduced_maps(made, gain, samples);
  for (std::size_t i = 0; i < 4; ++i) {
    ASSERT_EQ(maps[i].values.size(), 6u);
    for (std::size_t place = 0; place < 6; ++place) {
      // Per cent, from a mean of 1.01 of the class of 45 degrees, whose six pixels have one
      // at 1.06.
      const double expected = i != 1 ? 0 : place == 5 ? 5 : -1;
      if (i == 2 && place == 0) {
        EXPECT_TRUE(std::isnan(maps[i].values[place]));
      } else {
        EXPECT_NEAR(maps[i].values[place], expected, 1e-4) << i << ", " << place;
      }
    }
  }
  EXPECT_EQ(scale_end(maps), 1);  // of 23 points 99 per cent are within it
  const IndexedImage image = diverging_image(maps[1], 5);
  EXPECT_EQ(image.pixels, (std::vector<std::uint8_t>{102, 102, 102, 102, 102, 254}));

  made.maps.bad[23] = bad_pixel::clipped;
  const BadPixelMap bad = bad_pixel_map(made);
  EXPECT_EQ(bad.most, 1);
  EXPECT_EQ(bad.image.pixels[0], 255);
  EXPECT_EQ(bad.image.pixels[23], 255);
  EXPECT_EQ(std::count(bad.image.pixels.begin(), bad.image.pixels.end(), 0), 22);
}

TEST(IndexedImage, IsABitmapFromTheBottomUp) {
  IndexedImage image{2, 2, {1, 0, 0, 1}, {}};
  image.palette[1] = {0x12, 0x34, 0x56};
  const std::string address = data_address(image);
  // The bytes put together and encoded by another program.
  EXPECT_TRUE(address.starts_with(
      "data:image/bmp;base64,"
      "Qk0+BAAAAAAAADYEAAAoAAAAAgAAAAIAAAABAAgAAAAAAAgAAAAAAAAAAAAAAAAAAAAAAAAA"))
      << address.substr(0, 110);
  EXPECT_PRED2(contains, address, "AAAAAFY0");  // the second colour, blue first
  EXPECT_TRUE(address.ends_with("AAABAAABAAAA")) << address.substr(address.size() - 20);
}

}  // namespace

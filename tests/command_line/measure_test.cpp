// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "kv/image_files.h"
#include "tool.h"

using namespace kv::polarization;

namespace {

using Row = std::map<std::string, std::string>;

std::vector<std::string> split(const std::string& line) {
  std::vector<std::string> fields(1);
  for (const char sign : line) sign == ',' ? fields.emplace_back() : fields.back() += sign;
  return fields;
}

/// Of a CSV without quotes.
std::vector<Row> rows_of(const std::string& csv) {
  std::istringstream lines(csv);
  std::string line;
  std::getline(lines, line);
  const auto names = split(line);
  std::vector<Row> rows;
  while (std::getline(lines, line)) {
    const auto fields = split(line);
    EXPECT_EQ(fields.size(), names.size()) << line;
    Row& row = rows.emplace_back();
    for (std::size_t i = 0; i < names.size(); ++i) row[names[i]] = fields.at(i);
  }
  return rows;
}

double number(const Row& row, const std::string& name) { return std::stod(row.at(name)); }

/// Two cells of phase 0, whose second one is clipped. The first one, less 10 counts, is I0 = 100,
/// I135 = 50, I45 = 70, I90 = 40: S0 = 130, S1 = 60, S2 = 20.
const std::string kTwoCells = "P5 4 2 255\n\x6E\x3C\xFFZ\x50\x32ZZ";

std::string in(const std::string& name, int column, int row) {
  return " --region " + name + "=" + std::to_string(column) + "," + std::to_string(row) + ",16,16";
}

// Film discs of S0 = 0.7 of full scale. Their cells have sum v / 4 = gain S0 / 2 + dark variance as
// the variance of S0, with 64 cells an eighth of its root.
TEST(Measure, FindsTheDiscsOfTheSceneWithinTheErrorsThatNoiseLeaves) {
  const Tool tool;
  tool.run("simulate --width 300 --height 240 --bit-depth 12 --phase 45 --frames 5 -o night.pgm");
  const auto result =
      tool.run("measure night.pgm --phase 45 --sensor-noise 0.39,2.5 --as csv" + in("0", 52, 203) +
               in("1", 112, 203) + in("2", 172, 203) + in("3", 232, 203));
  ASSERT_EQ(result.status, 0) << result.error;
  const auto rows = rows_of(result.out);
  ASSERT_EQ(rows.size(), 20u);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const Row& row = rows[i];
    const int disc = static_cast<int>(i % 4);
    EXPECT_EQ(row.at("page"), std::to_string(i / 4 + 1));
    EXPECT_EQ(row.at("region"), std::to_string(disc));
    EXPECT_EQ(row.at("cells"), "64");
    EXPECT_NEAR(number(row, "s0"), 0.7 * 4095, 4 * number(row, "s0_error"));
    EXPECT_NEAR(number(row, "s0_error"), std::sqrt(0.39 * 2866.5 / 2 + 1.034) / 8, 0.03);
    EXPECT_NEAR(number(row, "dolp"), 0.9 - 0.1 * disc, 4 * number(row, "dolp_error"));
    EXPECT_LT(number(row, "dolp_error"), 0.002);
    const double turn = std::remainder(number(row, "angle") - 45 * disc, 180);
    EXPECT_LT(std::abs(turn), 4 * number(row, "angle_error"));
    EXPECT_LT(number(row, "angle_error"), 0.1);
  }
}

TEST(Measure, TellsTheSameInAllForms) {
  const Tool tool;
  tool.write("a.pgm", kTwoCells);
  tool.write("list.csv", "row,name,width,column,height\n# one\n0,\"left, \"\"L\"\"\",2,0,2\n");
  const auto told = [&](const std::string& options) {
    const auto result = tool.run("measure a.pgm --black-level 10 " + options);
    EXPECT_EQ(result.status, 0) << result.error;
    return result.out;
  };
  EXPECT_EQ(told("--region left=0,0,2,2"),
            "frame  region  cells  left out  clipped  S0 (counts)  S1 (counts)  S2 (counts)    DoLP"
            "  angle (degrees)\n"
            "a.pgm  left        1         0        0       130.00        60.00        20.00  0.4865"
            "             9.22\n");
  const std::string numbers = ",130,,60,,20,,0.48650425541";
  const std::string whole = told("--as csv");
  EXPECT_PRED2(contains, whole, "\na.pgm,1,whole frame,0,0,4,2,1,1,1,0,0" + numbers);
  EXPECT_PRED2(contains, told("--regions list.csv --as csv"),
               "\na.pgm,1,\"left, \"\"L\"\"\",0,0,2,2,1,0,0,0,0" + numbers);
  EXPECT_EQ(told("-o x.csv"), "1 frame measured; results in x.csv\n");
  EXPECT_EQ(tool.content("x.csv"), whole);

  // I0 of the second cell is rebuilt as I45 + I135 - I90 = 80 + 80 - 80.
  EXPECT_PRED2(contains, told("--rescue --region 2,0,2,2 --as csv"), ",1,0,1,1,0,160,,0,,0,");

  const auto json = nlohmann::json::parse(told("--as json --regions list.csv"));
  const auto& measured = json.at("measurements").at(0);
  EXPECT_EQ(measured.at("region"), "left, \"L\"");
  EXPECT_EQ(measured.at("s1"), 60);
  EXPECT_TRUE(measured.at("s1_error").is_null());
  EXPECT_EQ(measured.at("dolp").get<double>(), number(rows_of(whole)[0], "dolp"));
}

TEST(Measure, CorrectsByACalibrationIntoRawCounts) {
  const Tool tool;
  const std::string sensor =
      " --sensor 1 --bad-pixels 0.01 --width 128 --height 96 --bit-depth 12 --phase 90 ";
  tool.run("simulate --calibration-stack -o stack" + sensor);
  tool.run("simulate -o scene.pgm" + sensor);
  tool.run("calibrate --manifest stack/stack.csv --phase 90 -o camera.json");
  const std::string region = " --region film=22,81,6,6 --as csv ";
  const auto found = rows_of(tool.run("measure scene.pgm --calibration camera.json" + region).out);
  const auto raw = rows_of(tool.run("measure scene.pgm --phase 90 --black-level 64" + region).out);
  ASSERT_EQ(found.size(), 1u);
  ASSERT_EQ(raw.size(), 1u);
  EXPECT_NEAR(number(found[0], "s0") / number(raw[0], "s0"), 1, 0.03);
  EXPECT_NEAR(number(found[0], "dolp"), 0.9, 0.015);
  EXPECT_GT(number(found[0], "dolp_error"), 0);

  // The frame without its first column and row, by a place on the sensor.
  const Frame scene = open_frames(tool.path("scene.pgm"))->read(0);
  std::string part = "P5 127 95 4095\n";
  for (std::size_t i = 128; i < scene.samples.size(); ++i) {
    if (i % 128 == 0) continue;
    part += static_cast<char>(scene.samples[i] >> 8);
    part += static_cast<char>(scene.samples[i] & 0xFF);
  }
  tool.write("part.pgm", part);
  const auto moved = rows_of(tool.run("measure part.pgm --calibration camera.json --origin 1,1 "
                                      "--as csv --region film=21,80,6,6")
                                 .out);
  ASSERT_EQ(moved.size(), 1u);
  EXPECT_NEAR(number(moved[0], "dolp"), number(found[0], "dolp"), 0.005);
  EXPECT_NEAR(number(moved[0], "angle"), number(found[0], "angle"), 0.5);
}

TEST(Measure, GoesOnAfterFramesThatFailAndRefusesWhatCannotBe) {
  const Tool tool;
  tool.write("a.pgm", kTwoCells);
  tool.write("bad.pgm", "P5 4 2 255\nabc");
  tool.write("list.csv", "name,column,row,width\nx,1,2,3\n");
  tool.write("short.csv", "column,row,width,height\n1,2,3\n");
  struct Case {
    int status;
    const char *arguments, *part;
    std::size_t rows = 0;
  };
  const Case cases[] = {
      {1, "bad.pgm a.pgm", "bad.pgm: the PGM file is truncated", 1},
      {1, "none.pgm a.pgm", "none.pgm: there is no such file", 1},
      {2, "bad.pgm none.pgm", "bad.pgm: "},
      {1, ". --skip list.csv", "bad.pgm: the PGM file is truncated", 1},
      {2, "-", "standard input"},
      {2, "a.pgm --region 3,0,2,2", "not within the frame's 4 x 2"},
      {2, "a.pgm --region 0,0,2", "write, for example, 100,80,64,64"},
      {2, "a.pgm --region =0,0,2,2", "no name before the equals sign"},
      {2, "a.pgm --region a=0,0,2,2 --region a=2,0,2,2", "two regions 'a'"},
      {2, "a.pgm --regions list.csv", "no column 'height'"},
      {2, "a.pgm --regions short.csv", "short.csv, line 2: "},
      {2, "a.pgm --as text", "table, csv, json"},
      {2, "a.pgm --sensor-noise 0.39", "0.39,2.5"},
      {2, "a.pgm --calibration c.json --black-level 2", "excludes --black-level"},
      {2, "a.pgm -o ./a.pgm", "is an input"},
      {2, "a.pgm -o none/x.csv", "none/x.csv"},
  };
  for (const auto& [status, arguments, part, rows] : cases) {
    const ToolResult result = tool.run("measure --as csv " + std::string(arguments));
    EXPECT_EQ(result.status, status) << arguments;
    EXPECT_PRED2(contains, result.error, part);
    EXPECT_EQ(rows_of(result.out).size(), rows) << arguments;
  }
  tool.write("old.csv", "old");
  EXPECT_EQ(tool.run("measure bad.pgm -o old.csv").status, 2);
  EXPECT_EQ(tool.content("old.csv"), "old");
  EXPECT_EQ(tool.content("a.pgm"), kTwoCells);
}

}  // namespace

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// The built tool where it tells what is there: info and bench.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>

#include "kv/image_files.h"
#include "tool.h"

using namespace kv::polarization;

namespace {

using Json = nlohmann::json;

Json json_of(const Tool& tool, const std::string& arguments) {
  const ToolResult result = tool.run(arguments + " --json");
  EXPECT_EQ(result.status, 0) << result.error;
  return Json::parse(result.out, nullptr, false);
}

/// A frame of cells that are all alike, by their four samples in rows.
Frame even_frame(int width, int height, int bit_depth, std::array<int, 4> cell) {
  Frame frame = make_frame(static_cast<unsigned>(width), static_cast<unsigned>(height), bit_depth);
  for (int row = 0; row < height; ++row) {
    for (int column = 0; column < width; ++column) {
      frame.samples[static_cast<std::size_t>(row * width + column)] =
          static_cast<std::uint16_t>(cell[static_cast<std::size_t>(row % 2 * 2 + column % 2)]);
    }
  }
  return frame;
}

void save(const Tool& tool, const std::string& name, const Frame& frame) {
  save_image(tool.path(name), grey_image(frame));
}

TEST(Info, TellsTheSamplesOfEachClass) {
  const Tool tool;
  Frame frame = even_frame(8, 6, 12, {900, 500, 700, 300});
  frame.samples[0] = 4095;  // its cell tells nothing of the redundancy
  frame.samples[7] = 100;   // top right of a cell, 400 below the others
  save(tool, "frame.pgm", frame);
  const Json file = json_of(tool, "info frame.pgm --phase 45")["files"][0];
  EXPECT_EQ(file["format"], "pgm");
  const Json told = file["frame"];
  EXPECT_EQ(told["width"], 8);
  EXPECT_EQ(told["bit_depth"], 12);
  EXPECT_EQ(told["greatest_sample"], 4095);
  EXPECT_EQ(told["at_full_scale"], 1);
  const struct {
    const char* place;
    int polarizer, least, greatest;
    double mean;
  } classes[] = {{"top left", 45, 900, 4095, (11 * 900 + 4095) / 12.0},
                 {"top right", 90, 100, 500, (11 * 500 + 100) / 12.0},
                 {"bottom left", 0, 700, 700, 700},
                 {"bottom right", 135, 300, 300, 300}};
  for (std::size_t i = 0; i < 4; ++i) {
    SCOPED_TRACE(classes[i].place);
    const Json& place = told["classes"][i];
    EXPECT_EQ(place["place"], classes[i].place);
    EXPECT_EQ(place["polarizer"], classes[i].polarizer);
    EXPECT_EQ(place["least"], classes[i].least);
    EXPECT_EQ(place["greatest"], classes[i].greatest);
    EXPECT_NEAR(place["mean"], classes[i].mean, 1e-9);
  }
  // Of 11 cells one has a difference of 400, and all but it an S0 of 1200, that one of 1000.
  const double s0 = (10 * 1200 + 1000) / 11.0;
  EXPECT_NEAR(told["diagonal_difference"], 400 / 11.0 / s0, 1e-9);
  EXPECT_NEAR(told["diagonal_spread"], 400 * std::sqrt(10.0) / 11 / s0, 1e-9);
}

TEST(Info, NamesWhatIsOdd) {
  const Tool tool;
  Frame left = make_frame(64, 64, 16);
  for (std::size_t i = 0; i < left.samples.size(); ++i) {
    left.samples[i] = static_cast<std::uint16_t>(16 * (i + 1) % 65536);
  }
  save(tool, "left.pgm", left);
  save(tool, "left.raw", left);
  save(tool, "black.pgm", make_frame(8, 8, 12));
  save(tool, "odd.pgm", even_frame(9, 8, 12, {900, 500, 700, 301}));
  save(tool, "clipped.pgm", even_frame(8, 8, 12, {4095, 500, 700, 300}));
  save(tool, "uneven.pgm", even_frame(8, 8, 12, {901, 500, 300, 300}));
  save(tool, "dim.npy", even_frame(8, 8, 16, {900, 500, 700, 301}));
  save(tool, "fine.pgm", even_frame(8, 8, 12, {900, 500, 700, 301}));
  const std::pair<std::string, std::string> cases[] = {
      {"left.pgm", "multiples of 16: 12 bits, left-aligned; --bit-depth 16"},
      {"left.raw --width 64 --height 64 --raw-format Mono16", "--raw-format Mono12Left"},
      {"black.pgm", "all samples are 0"},
      {"odd.pgm", "a side is odd"},
      {"clipped.pgm", "25 per cent of the samples are at full scale, 4095"},
      {"uneven.pgm", "the diagonals differ by 40 per cent"},
      {"dim.npy", "needs 10 of 16 bits"},
      {"dim.npy --bit-depth 9", "32 samples are above 511"},
      {"fine.pgm", ""},
  };
  for (const auto& [arguments, part] : cases) {
    SCOPED_TRACE(arguments);
    const Json odd = json_of(tool, "info " + arguments)["files"][0]["odd"];
    ASSERT_EQ(odd.size(), part.empty() ? 0u : 1u) << odd;
    EXPECT_PRED2(contains, odd.dump(), part);
  }
}

/// Bytes of 12-bit samples, two in three bytes: GigE Vision's packing, or GenICam's.
std::string packed(const Frame& frame, bool shared_middle) {
  std::string bytes;
  for (std::size_t i = 0; i < frame.samples.size(); i += 2) {
    const unsigned p = frame.samples[i], q = frame.samples[i + 1];
    if (shared_middle) {
      for (const unsigned byte : {p >> 4, (q & 15) << 4 | (p & 15), q >> 4}) {
        bytes += static_cast<char>(byte);
      }
    } else {
      for (const unsigned byte : {p & 255, (q & 15) << 4 | p >> 8, q >> 4}) {
        bytes += static_cast<char>(byte);
      }
    }
  }
  return bytes;
}

TEST(Info, GuessesTheShapeOfHeaderlessFrames) {
  const Tool tool;
  EXPECT_EQ(tool.run("simulate -o words.raw --width 640 --height 512 --bit-depth 12").status, 0);
  EXPECT_EQ(tool.run("simulate -o bytes.raw --width 640 --height 480 --bit-depth 8").status, 0);
  Frame frame = open_frames(tool.path("words.raw"), RawShape{640, 512})->read(0);
  tool.write("p.raw", packed(frame, false));
  tool.write("packed.raw", packed(frame, true) + packed(frame, true));
  for (std::uint16_t& sample : frame.samples) sample = static_cast<std::uint16_t>(sample << 4);
  save(tool, "left.raw", frame);
  const struct {
    const char *file, *format;
    int height, frames;
  } cases[] = {{"words.raw", "Mono12", 512, 1},
               {"bytes.raw", "Mono8", 480, 1},
               {"p.raw", "Mono12p", 512, 1},
               {"packed.raw", "Mono12Packed", 512, 2},
               {"left.raw", "Mono12Left", 512, 1}};
  for (const auto& [file, format, height, frames] : cases) {
    SCOPED_TRACE(file);
    const Json told = json_of(tool, std::string("info ") + file)["files"][0];
    EXPECT_TRUE(told["frame"].is_null());
    ASSERT_FALSE(told["may_be"].empty());
    EXPECT_EQ(told["may_be"][0]["raw_format"], format);
    EXPECT_EQ(told["may_be"][0]["width"], 640);
    EXPECT_EQ(told["may_be"][0]["height"], height);
    EXPECT_EQ(told["may_be"][0]["frames"], frames);
  }
}

TEST(Info, LooksAtTheChosenPageAndGoesOnBehindBadFiles) {
  const Tool tool;
  tool.write("stack.pgm", "P5 2 2 255\nabcdP5 4 2 255\nefghijkl");
  tool.write("letter", "Dear friend,\n");
  const ToolResult first = tool.run("info letter none.pgm stack.pgm");
  EXPECT_EQ(first.status, 1);
  EXPECT_EQ(first.complaints(), 2) << first.error;
  EXPECT_PRED2(contains, first.error, "letter: the content is of no known format");
  EXPECT_PRED2(contains, first.out, "2 pages, of which page 1 was looked at");
  EXPECT_PRED2(contains, first.out, "2 x 2 pixels");
  EXPECT_PRED2(contains, tool.run("info stack.pgm --page 2").out, "4 x 2 pixels");
  const ToolResult none = tool.run("info stack.pgm --page 3");
  EXPECT_EQ(none.status, 2);
  EXPECT_PRED2(contains, none.error, "the last one is page 2");
}

TEST(Info, TellsWhatWasLoaded) {
  const Tool tool;
  const Json told = json_of(tool, "info");
  EXPECT_EQ(told["version"], KV_VERSION);
  const auto file_of = [&](const char* name) {
    return std::filesystem::path(told["machine"][name].get<std::string>());
  };
  EXPECT_TRUE(std::filesystem::equivalent(file_of("library"), KV_PROCESSOR_PATH));
  EXPECT_EQ(file_of("logger").stem(), "kevrinth_qrm_logger");
  for (const ImageFormatTraits& format : image_formats()) {
    EXPECT_EQ(told["formats"][std::string(format.name)], format.available()) << format.name;
  }
}

// Where a module is in use, the library without it is measured too, or it is told why not.
TEST(Bench, MeasuresThePlanesThatAreNamed) {
  const Tool tool;
  const Json told = json_of(
      tool, "bench --width 64 --height 48 --planes dolp,intensity+azimuth --threads 1,2 --time 0");
  EXPECT_EQ(told["width"], 64);
  std::set<std::pair<std::string, int>> measured;
  bool without_module = false;
  for (const Json& rate : told["rates"]) {
    EXPECT_GT(rate["frames_per_second"], 0);
    EXPECT_NEAR(
        rate["megapixels_per_second"].get<double>() / rate["frames_per_second"].get<double>(),
        64 * 48 / 1e6, 1e-9);
    if (rate["kernels"] != told["machine"]["kernels"]) {
      without_module = true;
    } else {
      measured.insert({rate["planes"].dump(), rate["threads"].get<int>()});
    }
  }
  const std::string two = R"(["intensity","azimuth"])";
  EXPECT_EQ(measured, (std::set<std::pair<std::string, int>>{
                          {R"(["dolp"])", 1}, {R"(["dolp"])", 2}, {two, 1}, {two, 2}}));
  const bool told_why = contains(told["not_measured"].dump(), "in the library: ");
  EXPECT_EQ(without_module || told_why, !told["machine"]["vector_module"].is_null());
}

TEST(Bench, RefusesWhatTheLibraryWouldNotReturnFrom) {
  const Tool tool;
  save(tool, "narrow.pgm", even_frame(3, 8, 8, {1, 2, 3, 4}));
  for (const std::string arguments :
       {"--file narrow.pgm", "--width 3", "--planes hue", "--threads 0", "--threads \"\""}) {
    const ToolResult result = tool.run("bench --time 0 --height 8 " + arguments);
    EXPECT_NE(result.status, 0) << arguments;
    EXPECT_EQ(result.complaints(), 1) << result.error;
  }
}

}  // namespace

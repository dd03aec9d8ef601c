// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// The built tool on good input.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "kv/image_files.h"
#include "kv/pictures/picture_kinds.h"
#include "kv/polarization/processor.h"
#include "tool.h"

using namespace kv::polarization;

namespace {

const std::string kPreferred(traits_of(preferred_format(ImageKind::grey)).name);

Frame read_frame(const std::filesystem::path& path) { return open_frames(path)->read(0); }

// The scene has four film discs in a row: 0, 45, 90 and 135 degrees with DoLP 0.9 to 0.6. A frame
// of 300 x 240 pixels has them at column 60, 120, 180 and 240 of row 211.
TEST(Simulate, TellsTheCommandThatRecoversTheDiscs) {
  const Tool tool;
  for (const ImageFormatTraits& traits : image_formats()) {
    if (!traits.available()) continue;
    const std::string format(traits.name);
    for (const std::string options : {"--bit-depth 16", "--phase 90 --bit-depth 8",
                                      "--phase 45 --bit-depth 12", "--phase 135 --bit-depth 9"}) {
      SCOPED_TRACE(format + " " + options);
      const ToolResult simulated =
          tool.run("simulate --width 300 --height 240 -o frame." + format + " " + options);
      ASSERT_EQ(simulated.status, 0) << simulated.error;
      EXPECT_PRED2(contains, simulated.out, "300 x 240 pixels");
      const std::string program = "kv-polarize ";
      std::string command = simulated.out.substr(simulated.out.find(program) + program.size());
      command.pop_back();  // the end of the line
      EXPECT_EQ(tool.run(command + " --overwrite").error, "");
      const Frame dolp = read_frame(tool.path("planes/frame_dolp." + kPreferred));
      const Frame intensity = read_frame(tool.path("planes/frame_intensity." + kPreferred));
      const Frame azimuth = read_frame(tool.path("planes/frame_azimuth." + kPreferred));
      for (int disc = 0; disc < 4; ++disc) {
        const auto pixel = static_cast<std::size_t>(211 * 300 + 60 + 60 * disc);
        EXPECT_NEAR(dolp.samples[pixel] / 65535.0, 0.9 - 0.1 * disc, 0.06) << disc;
        EXPECT_NEAR(intensity.samples[pixel] / 65535.0, 0.7, 0.04) << disc;
        const double degrees = azimuth.samples[pixel] * 180 / 65535.0 - 90;
        EXPECT_NEAR(std::remainder(degrees - 45 * disc, 180), 0, 3) << disc;
      }
    }
  }
}

class Transform : public testing::Test {
 protected:
  Transform() { tool_.run("simulate -o a.pgm --width 64 --height 400"); }

  ToolResult run(const std::string& arguments) const {
    const ToolResult result = tool_.run("transform " + arguments);
    EXPECT_EQ(result.status, 0) << result.error;
    return result;
  }

  Tool tool_;
};

TEST_F(Transform, WritesWhatTheToolkitComputes) {
  const auto expect_results = [this](const std::string& options, const std::string& format,
                                     int bit_depth, const Mosaic& mosaic, std::uint16_t output_max,
                                     std::optional<double> white) {
    run("a.pgm -o out --overwrite " + options);
    Frame frame = read_frame(tool_.path("a.pgm"));
    frame.bit_depth = bit_depth;
    Planes planes;
    planes.reshape(frame.width, frame.height, OutputSet::all(), output_max);
    Processor().transform(frame, mosaic, planes.views());
    const auto expect_file = [this](const std::string& name, auto write) {
      const WriteOptions as_told{.provenance =
                                     provenance_of(tool_.path("out/a_" + name)).value_or("none")};
      const std::string expected =
          written(tool_.path("expected"), [&](PendingFile& file) { write(file, as_told); });
      EXPECT_TRUE(tool_.content("out/a_" + name) == expected) << name;
    };
    const ImageFormat floats = preferred_format(ImageKind::floats);
    expect_file(
        "normalized_stokes" + std::string(ending_of(floats)), [&](auto& file, auto& as_told) {
          write_image(file, floats,
                      FloatImage{planes.width(), planes.height(), 2, planes.normalized_stokes()},
                      as_told);
        });
    for (std::size_t i = 1; i < kPlanes.size(); ++i) {
      expect_file(std::string(kPlanes[i].name) + "." + format, [&](auto& file, auto& as_told) {
        write_image(file, format_named(format).value(),
                    GreyImage{planes.width(), planes.height(), 16, planes.levels(kPlanes[i].plane)},
                    as_told);
      });
    }
    const auto expect_picture = [&](const std::string& name, const Picture& picture) {
      const ImageFormat pictures = preferred_format(ImageKind::picture);
      expect_file(
          name + "_picture" + std::string(ending_of(pictures, ImageKind::picture)),
          [&](auto& file, auto& as_told) { write_image(file, pictures, picture, as_told); });
    };
    Processor processor;
    PictureSource source;
    source.fill(processor, frame, mosaic);  // whatever output_max is
    PictureRanges ranges = ranges_of(source.maps());
    if (white) ranges.dolp_white = *white;
    for (const auto kind : {PictureKind::intensity, PictureKind::dolp, PictureKind::angle}) {
      expect_picture(std::string(traits_of(kind).name), picture_of(kind, source.maps(), ranges));
    }
  };
  expect_results("--origin 0,7", kPreferred, 16, {.y_origin = 7}, 65535, {});
  expect_results(
      "--phase 45 --origin 1,0 --bit-depth 15 --output-max 4095 --format pgm --dolp-white 0.5",
      "pgm", 15, {kv_polar_phase_45, 1, 0}, 4095, 0.5);
}

TEST_F(Transform, SaysWhatItDidAndWhere) {
  tool_.write("b.pgm", tool_.content("a.pgm"));
  const ToolResult two = run("a.pgm b.pgm -o x/y --planes intensity");
  EXPECT_EQ(two.error, "");  // no progress line
  for (const char* part : {"2 frames transformed in ", "megapixels per second", "x/y\n"}) {
    EXPECT_PRED2(contains, two.out, part);
  }
  EXPECT_EQ(tool_.results_in("x/y").size(), 8u);  // pictures need further planes
  run("a.pgm -o v --planes dolp --pictures angle_ticks,s1_ratio,contact_sheet");
  EXPECT_EQ(tool_.results_in("v").size(), 4u);
  const auto one = run("a.pgm -o w --planes dolp,azimuth --no-pictures --format pgm");
  EXPECT_PRED2(contains, one.out, "1 frame transformed; ");
  EXPECT_EQ(tool_.results_in("w"), (Names{"a_azimuth.pgm", "a_dolp.pgm"}));
}

TEST_F(Transform, LogShowsTheLinesOfTheLibrary) {
  for (const auto& [arguments, lines] : {std::pair{"transform --log 7 --planes dolp", 1},
                                         {"transform --log 7 --planes dolp,normalized_stokes", 4},
                                         {"transform --log 6 --planes dolp", 0}}) {
    const ToolResult result =
        tool_.run(std::string(arguments) + " a.pgm -o x --overwrite --no-pictures");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.complaints(), lines) << result.error;
    EXPECT_EQ(contains(result.error, "transform takes "), lines > 0) << result.error;
  }
}

// Columns of S0 508, 344, 180 and 180 from samples of 8 bits.
TEST_F(Transform, TellsOfClippedIntensityAndOffersTheMean) {
  tool_.write("bright.pgm", "P5 4 2 255\n\xFE\xFEZZ\xFE\xFEZZ");
  const ToolResult result =
      run("bright.pgm -o x --planes intensity,mean --no-pictures --format pgm");
  EXPECT_EQ(result.complaints(), 1);
  EXPECT_PRED2(contains, result.error, "clipped in 1 frame");
  EXPECT_TRUE(tool_.content("x/bright_mean.pgm").ends_with("\n4 2\n255\n\xFE\xACZZ\xFE\xACZZ"));
  EXPECT_EQ(run("bright.pgm -o y --planes mean --no-pictures").error, "");
}

TEST_F(Transform, NumbersTheFramesOfAFileAndWarnsOfExcess) {
  tool_.write("stack.raw", std::string(8 * 6 * 10 - 1, 'x') + '\x80');
  const bool shared = traits_of(preferred_format(ImageKind::grey)).stacks;
  const ToolResult result =
      run("stack.raw -o x --width 8 --height 6 --raw-bits 8 --bit-depth 7 "
          "--planes dolp --no-pictures" +
          std::string(shared ? " --stack none" : ""));
  EXPECT_EQ(result.complaints(), 1);
  EXPECT_PRED2(contains, result.error, "stack.raw, page 10: 1 samples are above 127");
  const Names names = tool_.results_in("x");
  ASSERT_EQ(names.size(), 10u);
  EXPECT_EQ(names.front(), "stack_01_dolp." + kPreferred);
  EXPECT_EQ(names.back(), "stack_10_dolp." + kPreferred);
}

// Three bytes 0x78 are the samples 0x878 and 0x787 in one packing, 0x788 and 0x787 in the other.
TEST_F(Transform, TakesHeaderlessFramesInThePixelFormatsOfCameras) {
  tool_.write("packed.raw", std::string(8 * 6 * 3 / 2, 'x'));
  for (const auto& [name, samples] :
       {std::pair{"Mono12p", "\x8\x78\x7\x87"}, {"Mono12Packed", "\x7\x88\x7\x87"}}) {
    std::string content = "P5 8 6 4095\n";
    for (int i = 0; i < 24; ++i) content += samples;
    tool_.write("wide.pgm", content);
    const std::string options = " -o x --planes intensity --no-pictures --format pgm --overwrite";
    run("wide.pgm" + options);
    run("packed.raw --width 8 --height 6 --raw-format " + std::string(name) + options);
    EXPECT_TRUE(std::ranges::equal(read_frame(tool_.path("x/packed_intensity.pgm")).samples,
                                   read_frame(tool_.path("x/wide_intensity.pgm")).samples))
        << name;
  }
}

TEST(Simulate, ObeysItsOptions) {
  const Tool tool;
  const auto frame = [&](const std::string& options) {
    EXPECT_EQ(tool.run("simulate -o x.pgm --width 80 --height 60 " + options).status, 0);
    return tool.content("x.pgm");
  };
  const std::string first = frame("");
  EXPECT_EQ(first.rfind("P5\n80 60\n65535\n", 0), 0u);
  EXPECT_EQ(frame("--seed 1 --noise"), first);
  EXPECT_NE(frame("--seed 8"), first);
  EXPECT_EQ(frame("--no-noise"), frame("--no-noise --seed 9"));
  EXPECT_PRED2(contains, tool.run("simulate -o x.pgm").out, "1224 x 1024 pixels");
}

TEST(Help, ShowsTheVersionAndTheCommands) {
  const Tool tool;
  EXPECT_EQ(tool.run("--version").out.rfind("kv-polarize " KV_VERSION "\n", 0), 0u);
  const ToolResult help = tool.run("--help");
  EXPECT_EQ(help.status, 0);
  for (const char* part : {"transform", "simulate", "Exit status"}) {
    EXPECT_PRED2(contains, help.out, part);
  }
  for (const char* part : {"stokes_s2, azimuth, dolp", "Examples"}) {
    EXPECT_PRED2(contains, tool.run("transform --help").out, part);
  }
}

#if !defined(_WIN32)
TEST(ProgressLine, FitsItsTerminalAndVanishes) {
  const Tool tool;
  if (std::system("script --version >/dev/null 2>&1") != 0) GTEST_SKIP() << "no script command";
  for (const char* name : {"a.pgm", "b.pgm"}) tool.write(name, "P5 8 2 255\nabcdefghijklmnop");
  const auto shown = [&](const std::string& columns) {
    const std::string command = "stty cols " + columns +
                                "; " KV_TOOL_PATH
                                " transform a.pgm b.pgm -o out --overwrite --no-pictures";
    tool.run("", "script -qec '" + command + "' /dev/null </dev/null >log; ");
    return tool.content("log");
  };
  const std::string line = "0 of 2 frames";
  const std::string bar = "[" + std::string(40, '.') + "] ";
  const std::string wide = shown("80");
  EXPECT_PRED2(contains, wide, "\r" + bar + line);
  EXPECT_PRED2(contains, wide, "frames\r" + std::string(56, ' ') + "\r2 frames transformed");
  EXPECT_PRED2(contains, shown("20"), "\r" + line + "\r");
}
#endif

}  // namespace

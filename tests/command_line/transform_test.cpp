// The built tool on good input.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "tool.h"
#include "toolkit/image_files/frame_reader.h"
#include "toolkit/image_files/image_writer.h"
#include "toolkit/processor.h"
#include "toolkit/scene/scene.h"

namespace {

kv::Frame read_plane(const std::string& path) {
  return kv::open_frames(path, std::nullopt)->read(0);
}

std::string preferred_extension() {
  return kv::extension_of(kv::format_named(kv::plane_format_names().front()).value());
}

struct Polarization {
  double dolp;
  double angle_degrees;
};

/// Mean over the middle of a disc, the angle by its unit vector at double angle.
Polarization mean_over(const kv::FilmDisc& disc, const kv::Frame& dolp, const kv::Frame& azimuth) {
  double sum = 0;
  double count = 0;
  kv::Stokes direction;
  const int reach = static_cast<int>(disc.radius * 0.6);
  for (int row = static_cast<int>(disc.row) - reach; row < disc.row + reach; ++row) {
    for (int column = static_cast<int>(disc.column) - reach; column < disc.column + reach;
         ++column) {
      const auto index = static_cast<std::size_t>(row * dolp.width + column);
      const double twice_angle =
          azimuth.samples[index] / 65535.0 * 2 * std::numbers::pi - std::numbers::pi;
      direction.s1 += std::cos(twice_angle);
      direction.s2 += std::sin(twice_angle);
      sum += dolp.samples[index] / 65535.0;
      ++count;
    }
  }
  return {sum / count, direction.angle_degrees()};
}

struct Chain {
  std::string extension;
  int phase;
  int bit_depth;
  std::vector<std::string> further_arguments;
};

void PrintTo(const Chain& chain, std::ostream* out) {
  *out << chain.extension << ", phase " << chain.phase << ", depth " << chain.bit_depth;
}

std::string name_of_chain(const testing::TestParamInfo<Chain>& info) {
  return info.param.extension + "_phase_" + std::to_string(info.param.phase) + "_depth_" +
         std::to_string(info.param.bit_depth);
}

class SimulateThenTransform : public testing::TestWithParam<Chain> {};

TEST_P(SimulateThenTransform, RecoversTheDiscs) {
  const Chain& chain = GetParam();
  const auto formats = kv::plane_format_names();
  if (chain.extension != "raw" &&
      std::find(formats.begin(), formats.end(), chain.extension) == formats.end()) {
    GTEST_SKIP() << "this build has no " << chain.extension;
  }
  const Tool tool;
  const std::string frame = tool.path("frame." + chain.extension);
  const std::string phase = std::to_string(chain.phase);
  const std::string depth = std::to_string(chain.bit_depth);
  const ToolResult simulated = tool.run({"simulate", "-o", frame, "--width", "301", "--height",
                                         "240", "--phase", phase, "--bit-depth", depth});
  ASSERT_EQ(simulated.status, 0) << simulated.error;

  std::vector<std::string> arguments = {"transform",         frame,     "-o",
                                        tool.path("planes"), "--phase", phase};
  arguments.insert(arguments.end(), chain.further_arguments.begin(), chain.further_arguments.end());
  const ToolResult transformed = tool.run(arguments);
  ASSERT_EQ(transformed.status, 0) << transformed.error;
  EXPECT_EQ(transformed.error, "");

  const kv::Frame dolp = read_plane(tool.path("planes/frame_dolp" + preferred_extension()));
  const kv::Frame azimuth = read_plane(tool.path("planes/frame_azimuth" + preferred_extension()));
  const kv::Scene scene(301, 240);
  for (const kv::FilmDisc& disc : scene.discs()) {
    const Polarization seen = mean_over(disc, dolp, azimuth);
    EXPECT_NEAR(seen.dolp, disc.dolp, 0.01) << disc.angle_degrees << " degrees";
    EXPECT_NEAR(std::remainder(seen.angle_degrees - disc.angle_degrees, 180), 0, 0.5);
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, SimulateThenTransform,
    testing::Values(Chain{"png", 0, 16, {}}, Chain{"png", 90, 8, {}},
                    Chain{"png", 45, 12, {"--bit-depth", "12"}}, Chain{"tiff", 135, 10, {}},
                    Chain{"pgm", 45, 12, {}}, Chain{"pgm", 135, 16, {}},
                    Chain{"raw",
                          90,
                          12,
                          {"--bit-depth", "12", "--width", "301", "--height", "240", "--raw-bits",
                           "16"}},
                    Chain{"raw", 0, 8, {"--width", "301", "--height", "240", "--raw-bits", "8"}}),
    name_of_chain);

class TransformTest : public testing::Test {
 protected:
  TransformTest() { simulate("a.pgm"); }

  void simulate(const std::string& name) const {
    ASSERT_EQ(
        tool_.run({"simulate", "-o", tool_.path(name), "--width", "64", "--height", "48"}).status,
        0);
  }

  Tool tool_;
};

TEST_F(TransformTest, WritesAllPlanesAndPicturesAndSaysWhere) {
  const ToolResult result = tool_.run({"transform", tool_.path("a.pgm"), "-o", tool_.path("x/y")});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.error, "");
  EXPECT_NE(result.out.find("1 frame transformed"), std::string::npos) << result.out;
  EXPECT_NE(result.out.find("megapixels per second"), std::string::npos) << result.out;
  EXPECT_NE(result.out.find(tool_.path("x/y")), std::string::npos) << result.out;
  const std::string plane = preferred_extension();
  const std::string picture = "_picture" + kv::picture_extension();
  std::vector<std::string> expected = {"a_angle" + picture,
                                       "a_azimuth" + plane,
                                       "a_dolp" + plane,
                                       "a_dolp" + picture,
                                       "a_intensity" + plane,
                                       "a_intensity" + picture,
                                       "a_stokes_s1" + plane,
                                       "a_stokes_s2" + plane,
                                       "a_normalized_stokes" + kv::float_pairs_extension()};
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(tool_.files_in("x/y"), expected);
}

TEST_F(TransformTest, WritesOnlyWhatIsAskedFor) {
  const auto run = [&](const std::string& folder, std::vector<std::string> options) {
    options.insert(options.begin(),
                   {"transform", tool_.path("a.pgm"), "-o", tool_.path(folder), "--format", "pgm"});
    EXPECT_EQ(tool_.run(options).status, 0);
    return tool_.files_in(folder);
  };
  using Names = std::vector<std::string>;
  EXPECT_EQ(run("x", {"--planes", "dolp,azimuth", "--no-pictures"}),
            (Names{"a_azimuth.pgm", "a_dolp.pgm"}));
  EXPECT_EQ(run("y", {"--planes", "intensity", "--no-pictures"}), (Names{"a_intensity.pgm"}));
  // Pictures need planes that are not to be written.
  EXPECT_EQ(run("z", {"--planes", "intensity"}).size(), 4u);
}

TEST_F(TransformTest, LogShowsTheLinesOfTheLibrary) {
  const auto run = [&](std::vector<std::string> first, const std::vector<std::string>& last) {
    first.insert(first.end(), {"transform", tool_.path("a.pgm"), "-o", tool_.path("x"), "--planes",
                               "dolp", "--no-pictures"});
    first.insert(first.end(), last.begin(), last.end());
    return tool_.run(first);
  };
  for (const ToolResult& result : {run({"--log", "7"}, {}), run({}, {"--log", "7"})}) {
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.complaints(), 1u) << result.error;
    EXPECT_NE(result.error.find("transform takes "), std::string::npos) << result.error;
  }
  EXPECT_EQ(run({}, {"--log", "6"}).error, "");
  EXPECT_LE(run({}, {"--log", "7", "--planes", "normalized_stokes"}).complaints(), 4u);
}

TEST_F(TransformTest, SettingsReachTheLibrary) {
  const auto azimuth = [&](const std::string& folder, std::vector<std::string> options) {
    options.insert(options.begin(), {"transform", tool_.path("a.pgm"), "-o", tool_.path(folder),
                                     "--format", "pgm", "--planes", "azimuth", "--no-pictures"});
    EXPECT_EQ(tool_.run(options).status, 0);
    return read_plane(tool_.path(folder + "/a_azimuth.pgm")).samples;
  };
  const auto plain = azimuth("plain", {});
  // The mosaic of phase 0 begins with 0 135 over 45 90: one column on it is that of phase 135, one
  // row on that of 45.
  EXPECT_EQ(azimuth("phase", {"--phase", "135"}), azimuth("column", {"--origin", "1,0"}));
  EXPECT_EQ(azimuth("phase", {"--phase", "45"}), azimuth("row", {"--origin", "0,7"}));
  EXPECT_NE(azimuth("phase", {"--phase", "45"}), plain);
  const auto small = azimuth("small", {"--output-max", "180"});
  EXPECT_EQ(*std::max_element(small.begin(), small.end()) <= 180, true);
  EXPECT_NEAR(small[100], plain[100] * 180.0 / 65535, 1);
}

TEST_F(TransformTest, SeveralFramesOfOneFileAreNumbered) {
  write_content(tool_.path("stack.raw"), std::string(static_cast<std::size_t>(8 * 6 * 10), 'x'));
  const ToolResult result = tool_.run({"transform", tool_.path("stack.raw"), "-o", tool_.path("x"),
                                       "--width", "8", "--height", "6", "--raw-bits", "8",
                                       "--planes", "dolp", "--no-pictures", "--format", "pgm"});
  EXPECT_EQ(result.status, 0) << result.error;
  const auto names = tool_.files_in("x");
  ASSERT_EQ(names.size(), 10u);
  EXPECT_EQ(names.front(), "stack_01_dolp.pgm");
  EXPECT_EQ(names.back(), "stack_10_dolp.pgm");
  EXPECT_NE(result.out.find("10 frames"), std::string::npos) << result.out;
}

TEST_F(TransformTest, NoProgressBarReachesAPipe) {
  simulate("b.pgm");
  simulate("c.pgm");
  const ToolResult result = tool_.run({"transform", tool_.path("a.pgm"), tool_.path("b.pgm"),
                                       tool_.path("c.pgm"), "-o", tool_.path("x")});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.error, "");
  EXPECT_EQ(result.out.find('\r'), std::string::npos);
}

TEST_F(TransformTest, SamplesBeyondTheBitDepthAreWarnedOf) {
  const ToolResult result =
      tool_.run({"transform", tool_.path("a.pgm"), "-o", tool_.path("x"), "--bit-depth", "10"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.complaints(), 1u);
  EXPECT_NE(result.error.find("above 1023"), std::string::npos) << result.error;
}

TEST(Simulate, IsReproducibleAndObeysItsOptions) {
  const Tool tool;
  const auto frame = [&](const std::string& name, std::vector<std::string> options) {
    options.insert(options.begin(),
                   {"simulate", "-o", tool.path(name), "--width", "80", "--height", "60"});
    EXPECT_EQ(tool.run(options).status, 0);
    return content_of(tool.path(name));
  };
  const std::string first = frame("1.pgm", {"--seed", "7"});
  EXPECT_EQ(frame("2.pgm", {"--seed", "7"}), first);
  EXPECT_NE(frame("3.pgm", {"--seed", "8"}), first);
  const std::string clean = frame("4.pgm", {"--no-noise", "--bit-depth", "8"});
  EXPECT_EQ(frame("5.pgm", {"--no-noise", "--bit-depth", "8", "--seed", "9"}), clean);
  EXPECT_EQ(clean.size(), std::string("P5\n80 60\n255\n").size() + 80 * 60);
}

TEST(Help, ShowsTheVersionAndBothCommands) {
  const Tool tool;
  EXPECT_EQ(tool.run({"--version"}).out, "kv-polarize " KV_VERSION "\n");
  const ToolResult help = tool.run({"--help"});
  EXPECT_EQ(help.status, 0);
  for (const char* part : {"transform", "simulate", "Examples", "Exit status"}) {
    EXPECT_NE(help.out.find(part), std::string::npos) << part;
  }
}

}  // namespace

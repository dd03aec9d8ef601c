// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Runs over many frames by the built tool: what is there after them, and what they tell.
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>

#include "kv/image_files.h"
#include "tool.h"

using namespace kv::polarization;

namespace {

const std::string kBad = "P5 3 3 255\n123456789";
/// A format whose files hold several images.
const std::string kStacked = traits_of(ImageFormat::tiff).available() ? "tiff" : "pgm";
const std::string kPlane = " --planes dolp --no-pictures --format pgm ";

/// A frame of noise; equal seeds give equal ones.
std::string frame(unsigned seed) {
  std::minstd_rand noise(seed);
  std::string samples;
  for (int i = 0; i < 32 * 24; ++i) samples += static_cast<char>(noise() >> 8);
  return "P5 32 24 255\n" + samples;
}

/// The tool in a folder with frames in/a and in/b, and in/c of three pages.
class Night : public Tool {
 public:
  Night() {
    std::filesystem::create_directory(path("in"));
    write("in/a.pgm", frame(1));
    write("in/b.pgm", frame(2));
    write("in/c.pgm", frame(3) + frame(4) + frame(5));
  }

  ToolResult transform(const std::string& arguments, int status = 0) const {
    ToolResult result = run("transform " + arguments);
    EXPECT_EQ(result.status, status) << arguments << "\n" << result.error;
    return result;
  }

  /// Files of a folder and those below it, by their names.
  std::map<std::string, std::string> everything(const std::string& folder) const {
    std::map<std::string, std::string> files;
    if (!std::filesystem::exists(path(folder))) return files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path(folder))) {
      if (!entry.is_regular_file()) continue;
      files[entry.path().lexically_relative(path(folder)).generic_string()] =
          content_of(entry.path());
    }
    return files;
  }
};

#if !defined(_WIN32)
TEST(Batch, ResumesAfterKillsAsIfThereHadBeenNone) {
  std::mt19937 random(std::random_device{}());
  std::uniform_real_distribution<> seconds(0.0, 0.1);
  for (const std::string options : {"--planes dolp,mean --pictures dolp",
                                    "--planes normalized_stokes --no-pictures --format npy"}) {
    const Night night;
    for (unsigned i = 0; i < 12; ++i) {
      night.write("in/f" + std::to_string(i) + ".pgm", frame(6 + i));
    }
    night.transform("in -o undisturbed " + options);
    for (int round = 0; round < 6; ++round) {
      night.run("transform in -o out --resume " + options, "exec 2>/dev/null; ",
                " & sleep " + std::to_string(seconds(random)) + "; kill -KILL $!; wait $!");
    }
    night.transform("in -o out --resume " + options);
    EXPECT_TRUE(night.everything("out") == night.everything("undisturbed")) << options;
  }
}
#endif

TEST(Batch, ResumingDoesWhatChanged) {
  const auto nothing = [](const Night&) {};
  const auto cut = [](const char* file) {
    return [file](const Night& night) { std::filesystem::resize_file(night.path(file), 9); };
  };
  const auto put = [](const char* file) {
    return [file](const Night& night) { night.write(file, frame(9)); };
  };
  const auto replace_a = [](const Night& night) {
    std::filesystem::copy(night.path("in"), night.path("other"));
    night.transform("other/a.pgm -o out --overwrite" + kPlane);
    std::filesystem::remove_all(night.path("other"));
  };
  struct Case {
    const char *what, *summary;
    std::function<void(const Night&)> change;
    const char* options = "";
  };
  const Case cases[] = {
      {"nothing", "0 frames transformed, 5 done before", nothing},
      {"an input", "1 frame transformed, 4 done before", put("in/b.pgm")},
      {"one input more", "1 frame transformed, 5 done before", put("in/d.pgm")},
      {"an option", "5 frames transformed in", nothing, "--phase 90"},
      {"a default that is said", "0 frames transformed, 5", nothing, "--output-max 65535"},
      {"a result that is cut", "3 frames transformed, 2 done before", cut("out/c_dolp.pgm")},
      {"a journal that is cut", "5 frames transformed in", cut("out/kv-polarize.journal")},
      {"another input's result", "1 frame transformed, 4 done before", replace_a},
  };
  for (const auto& [what, summary, change, options] : cases) {
    SCOPED_TRACE(what);
    const Night night;
    night.transform("in -o out" + kPlane);
    change(night);
    EXPECT_PRED2(contains, night.transform("in -o out --resume" + kPlane + options).out, summary);
    night.transform("in -o anew" + kPlane + options);
    EXPECT_TRUE(night.everything("out") == night.everything("anew"));
  }
}

TEST(Batch, ReplacesNothingUnasked) {
  const Night night;
  std::filesystem::create_directories(night.path("out/b_mean.pgm"));
  std::filesystem::create_directories(night.path("other"));
  night.write("other/a.pgm", frame(8));
  night.transform("in/a.pgm -o out" + kPlane);
  night.write("out/c_dolp.pgm", "of somebody else");
  night.write("out/a_mean.npy.json", "{}");
  const auto before = night.everything("out");
  for (const auto& [arguments, part] :
       {std::pair{"in/a.pgm -o out --planes dolp", "a_dolp.pgm is there already; --resume does"},
        {"in -o out --planes dolp", "is there already, and so are 1 other results"},
        {"in/b.pgm in/c.pgm -o out --planes dolp --resume", "c_dolp.pgm is there already, and not"},
        {"other/a.pgm -o out --planes dolp --resume", "would become one of other/a.pgm"},
        {"in/a.pgm -o out --planes mean --format npy", "a_mean.npy.json is there already"},
        {"in/a.pgm -o out --planes mean --format npy --resume", "a_mean.npy.json is there"},
        {"in/b.pgm -o out --planes mean --overwrite", "b_mean.pgm: this is a folder"},
        {"in/a.pgm other/a.pgm -o out --planes mean", "would have the same name"},
        {"in/c.pgm -o out --planes mean --stack none --names {name}", "would have the same name"},
        {"in/b.pgm -o in --planes dolp --names a --overwrite in/a.pgm", "replace an input"}}) {
    const std::string all = std::string("--format pgm --no-pictures ") + arguments;
    EXPECT_PRED2(contains, night.transform(all, 2).error, part);
    EXPECT_TRUE(night.everything("out") == before) << arguments;
  }
}

TEST(Batch, ADryRunNamesTheFilesOfTheRun) {
  const std::pair<std::string, Names> cases[] = {
      {"in --format pgm", {"a_dolp.pgm", "b_dolp.pgm", "c_dolp.pgm"}},
      {"in --format pgm --stack none --skip \"in/[!ac]*\"",
       {"a_dolp.pgm", "c_1_dolp.pgm", "c_2_dolp.pgm", "c_3_dolp.pgm"}},
      {"in/c.pgm --stack inputs --planes dolp,azimuth,mean --pages 2,3 --format " + kStacked,
       {"c_mean." + kStacked, "c_planes." + kStacked}},
      {"in/b.pgm in/c.pgm --format npy --stack none --pages 1 --names {index:02}/{page}{plane}",
       {"01/1dolp.npy", "01/1dolp.npy.json", "02/1dolp.npy", "02/1dolp.npy.json"}},
  };
  for (const auto& [words, names] : cases) {
    SCOPED_TRACE(words);
    const Night night;
    const std::string arguments = "-o out --planes dolp --no-pictures " + words;
    std::istringstream told(night.transform(arguments + " --dry-run").out);
    EXPECT_EQ(night.files_in("out"), Names());
    night.transform(arguments);
    auto files = night.everything("out");
    files.erase("kv-polarize.journal");
    Names named;
    for (std::string line; std::getline(told, line) && contains(line, " bytes at most");) {
      named.push_back(line.substr(0, line.find("  ")));
      EXPECT_LE(files[named.back()].size(), std::stoul(line.substr(line.find("  "))));
    }
    std::ranges::sort(named);
    EXPECT_EQ(named, names);
    EXPECT_TRUE(std::ranges::equal(files, names, {}, [](const auto& file) { return file.first; }));
  }
}

TEST(Batch, StandardStreamsTakeAndGiveFrames) {
  const Night night;
  const std::string plane = "--planes dolp --no-pictures --format raw";
  const std::string mean = "--planes mean --no-pictures --format pgm";
  night.transform("in/c.pgm -o out " + mean);
  night.transform("out/c_mean.pgm -o out " + plane);
  std::string expected = night.content("out/c_mean_dolp.raw");
  std::erase(expected, '\r');  // as of the tool's streams
  const ToolResult piped = night.run(
      "transform - -o - " + plane, "\"" KV_TOOL_PATH "\" transform in/c.pgm -o - " + mean + " | ");
  EXPECT_EQ(piped.status, 0) << piped.error;
  EXPECT_TRUE(piped.out == expected);
  EXPECT_PRED2(contains, night.transform("in/c.pgm -o - --format pgm", 2).error,
               "takes one result");
  if (traits_of(ImageFormat::png).available()) {
    EXPECT_PRED2(contains,
                 night.transform("in -o - --planes dolp --no-pictures --format png", 2).error,
                 "raw, npy and");
  }
}

#if !defined(_WIN32)
TEST(Batch, TellsProgramsWhatItTellsPeople) {
  const Night night;
  using Json = nlohmann::json;
  night.write("in/bad.pgm", kBad);
  for (const auto& [inputs, status, frames, failed] :
       {std::tuple{"in/a.pgm in/b.pgm", 0, 2, 0}, {"in", 1, 5, 1}, {"in/bad.pgm", 2, 0, 1}}) {
    const std::string arguments = "--json --events 3 -o out --overwrite" + kPlane + inputs;
    const Json sums = Json::parse(night.transform(arguments + " 3>events", status).out);
    std::map<std::string, int> events;
    std::uint64_t bytes = 0;
    std::istringstream lines(night.content("events"));
    Json last;
    for (std::string line; std::getline(lines, line);) {
      last = Json::parse(line);
      ++events[last.at("event")];
      if (!last.contains("input")) continue;
      for (const Json& file : last.at("results")) {
        const std::string name = file.at("file");
        EXPECT_EQ(night.content("out/" + name).size(), file.at("size")) << name;
        bytes += file.at("size").get<std::uint64_t>();
      }
    }
    EXPECT_EQ(sums.at("status"), status);
    EXPECT_EQ(sums.at("bytes"), bytes);
    EXPECT_TRUE(sums.at("frames") == frames && sums.at("failed") == failed) << sums;
    EXPECT_TRUE(events["frame"] == frames && events["failed"] == failed) << sums;
    EXPECT_EQ(last.at("event"), "end");
    last.erase("event");
    EXPECT_EQ(last, sums);
  }
}

TEST(Batch, FailedInputsCanBeRunAgain) {
  const Night night;
  const Names names = {"#1.pgm", "@2.pgm", " 3.pgm", "4\x1B[31m\x9B.pgm"};
  for (const std::string& name : names) night.write(name, kBad);
  const ToolResult first = night.transform("./*.pgm in -o out --list-failed list" + kPlane, 1);
  EXPECT_EQ(first.complaints(), 4) << first.error;
  EXPECT_EQ(first.error.find_first_of("\x1B\x9B"), std::string::npos);
  for (const std::string& name : names) night.write(name, frame(1));
  EXPECT_PRED2(contains, night.transform("@list -o out" + kPlane).out, "4 frames transformed");
}

TEST(Batch, FilesNeverTakeTheStreamsThatAreClosed) {
  const Night night;
  night.write("in/bad.pgm", kBad);
  const std::string run = "transform in -o out --overwrite -v --list-failed list" + kPlane;
  for (const std::string closed : {"", ">&-", "2>&-", ">&- 2>&- <&-", "2>/dev/full"}) {
    night.run("", "", "; " KV_TOOL_PATH " " + run + ">/dev/null 2>/dev/null " + closed);
    EXPECT_EQ(night.content("list"), "in/bad.pgm\n") << closed;
    night.transform("in -o same --skip '*bad*' --overwrite" + kPlane);
    EXPECT_TRUE(night.everything("out") == night.everything("same")) << closed;
  }
}
#endif

TEST(Batch, EqualRunsWriteEqualBytesInTheOrderOfThePages) {
  const Night night;
  const std::string options = " --planes dolp,normalized_stokes --pictures angle --format pgm ";
  night.transform("in -o first --jobs 3" + options);
  for (const std::string jobs : {"", "--jobs 1", "--jobs 5"}) {
    night.transform("in -o second --overwrite" + options + jobs);
    EXPECT_TRUE(night.everything("first") == night.everything("second")) << jobs;
  }
  night.transform("in/c.pgm -o first --stack none" + kPlane);
  for (std::size_t page = 0; page < 3; ++page) {
    const auto single = night.path("first/c_" + std::to_string(page + 1) + "_dolp.pgm");
    EXPECT_TRUE(std::ranges::equal(open_frames(night.path("first/c_dolp.pgm"))->read(page).samples,
                                   open_frames(single)->read(0).samples));
  }
}

TEST(Batch, TheLastOptionWins) {
  const Night night;
  for (const std::string options :
       {"--planes azimuth --planes mean", "--dry-run --no-dry-run --planes mean",
        "--pages 7 --no-pages --planes mean", "--format npy --planes mean --format pgm"}) {
    night.transform("in/a.pgm -o out --overwrite --format pgm --no-pictures " + options);
    EXPECT_EQ(night.results_in("out"), Names{"a_mean.pgm"}) << options;
    std::filesystem::remove_all(night.path("out"));
  }
  EXPECT_EQ(night.transform("--stack=?").out, "none\nplanes\ninputs\n");
}

}  // namespace

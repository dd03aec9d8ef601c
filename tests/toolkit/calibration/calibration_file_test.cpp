// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/calibration/calibration_file.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "error_of.h"
#include "temporary_folder.h"
#include "test_calibration.h"
#include "toolkit/calibration/file/sha256.h"

using namespace kv::polarization;

namespace {

Calibration saved_calibration() {
  Calibration made = made_calibration(20, 10, {kv_polar_phase_135, 3, 4}, 12);
  made.source_offset = 0.1;
  made.source_dolp = 1 / 1.1;
  made.angles_solved = true;
  made.condition = 1.7 / 1.1;
  made.camera = "caméra \"4\"";
  made.date = "2026-01-02T03:04:05Z";
  made.software = "test 1";
  made.classes[2].gain_scatter = 5e-324;
  made.maps.bad[7] = bad_pixel::noisy | bad_pixel::dark_defect;
  made.maps.gain[7] = -0.0f;
  made.frames = {{"dark.png", FrameKind::dark, 0, true, "", 0.25, 0, 1.01},
                 {"a.png", FrameKind::polarized, 22.5, false, "clipped", 3e3, -0.7, 9}};
  made.findings = {{"cross-validation: DoLP", 1e-3, 1.1e-3, "", true, "as noise would have it"}};
  return made;
}

template <class Number>
void expect_same_bits(const Buffer<Number>& a, const Buffer<Number>& b) {
  ASSERT_EQ(a.size(), b.size());
  EXPECT_EQ(std::memcmp(a.data(), b.data(), a.size() * sizeof(Number)), 0);
}

TEST(CalibrationFile, GivesBackEveryBit) {
  const TemporaryFolder folder;
  const Calibration saved = saved_calibration();
  save_calibration(saved, folder / "cal.json");
  EXPECT_EQ(names_in(folder / ".").size(), 9u);
  const Calibration loaded = load_calibration(folder / "cal.json");
  expect_same_bits(loaded.maps.black, saved.maps.black);
  expect_same_bits(loaded.maps.gain, saved.maps.gain);
  expect_same_bits(loaded.maps.diattenuation, saved.maps.diattenuation);
  expect_same_bits(loaded.maps.orientation, saved.maps.orientation);
  expect_same_bits(loaded.maps.gain_error, saved.maps.gain_error);
  expect_same_bits(loaded.maps.diattenuation_error, saved.maps.diattenuation_error);
  expect_same_bits(loaded.maps.orientation_error, saved.maps.orientation_error);
  expect_same_bits(loaded.maps.bad, saved.maps.bad);
  EXPECT_EQ(loaded.mosaic.phase, kv_polar_phase_135);
  EXPECT_EQ(loaded.mosaic.y_origin, 4);
  EXPECT_EQ(loaded.noise.gain, saved.noise.gain);
  EXPECT_EQ(loaded.condition, saved.condition);
  EXPECT_EQ(loaded.classes[2].gain_scatter, 5e-324);
  EXPECT_EQ(loaded.classes[3].diattenuation.value, saved.classes[3].diattenuation.value);
  EXPECT_EQ(loaded.camera, saved.camera);
  EXPECT_EQ(loaded.frames.at(1).refusal, "clipped");
  EXPECT_EQ(loaded.frames.at(0).kind, FrameKind::dark);
  EXPECT_EQ(loaded.findings.at(0).expected, 1.1e-3);
  EXPECT_TRUE(loaded.findings.at(0).good && loaded.angles_solved && !loaded.frames[1].used);
  save_calibration(loaded, folder / "again.json");
  std::string text = content_of(folder / "again.json");
  for (std::size_t at; (at = text.find("again.")) != std::string::npos;) text.replace(at, 5, "cal");
  EXPECT_EQ(text, content_of(folder / "cal.json"));
}

/// Puts one text for another, once; the first one must be there.
void replace_in(const std::filesystem::path& path, const std::string& from, const std::string& to) {
  std::string text = content_of(path);
  const std::size_t at = text.find(from);
  ASSERT_NE(at, std::string::npos) << from;
  write_content(path, text.replace(at, from.size(), to));
}

std::string sha256_of(const std::string& text) {
  Sha256 sum;
  sum.add(std::as_bytes(std::span(text)));
  return sum.digest();
}

TEST(CalibrationFile, RefusesHostileFiles) {
  const TemporaryFolder folder;
  const std::filesystem::path json = folder / "cal.json";
  const std::filesystem::path gain = folder / "cal.gain.npy";
  const auto edit = [&](const char* from, const char* to) {
    return [&json, from, to] { replace_in(json, from, to); };
  };
  const auto put_gain = [&](float value) {  // of pixel 3, with the sum put right
    return [&, value] {
      std::string bytes = content_of(gain);
      const std::string before = sha256_of(bytes);
      std::memcpy(bytes.data() + bytes.size() - 4 * 197, &value, 4);
      write_content(gain, bytes);
      replace_in(json, before, sha256_of(bytes));
    };
  };
  struct Case {
    std::function<void()> damage;
    const char* part;
  };
  const std::vector<Case> cases = {
      {[&] { std::filesystem::remove(json); }, "no such file"},
      {[&] { std::filesystem::resize_file(json, 700); }, "damaged at byte 701"},
      {[&] { write_content(json, "[1]"); }, "the file must be an object"},
      {[&] { write_content(json, std::string(100000, '[')); }, "damaged"},
      {edit("calibration of a", "picture of a"), "its format is 'picture of a"},
      {edit("\"version\": 1", "\"version\": 2"), "version 2; this software reads version 1"},
      {edit("\"width\"", "\"wide\""), "width is missing"},
      {edit("\"width\": 20", "\"width\": 22"), "22 x 10 pixels"},
      {edit("\"width\": 20", "\"width\": 19"), "19 x 10 pixels cannot be"},
      {edit("\"width\": 20", "\"width\": 2147483646"), "even and from 2 to 16384"},
      {edit("\"height\": 10", "\"height\": 4294967306"), "height must be a whole number"},
      {edit("\"height\": 10", "\"height\": -10"), "height must be a whole number"},
      {edit("\"height\": 10", "\"height\": 10.0"), "height must be a whole number"},
      {edit("\"phase\": 135", "\"phase\": 30"), "mosaic.phase must be 0, 45, 90 or 135"},
      {edit("\"x_origin\": 3", "\"x_origin\": \"3\""), "mosaic.x_origin must be a whole"},
      {edit("\"bit_depth\": 12", "\"bit_depth\": 17"), "bit depth is 17"},
      {edit("\"angles_solved\": true", "\"angles_solved\": 1"), "must be true or false"},
      {edit("\"nominal_angle\": 45", "\"nominal_angle\": 90"), "order 0, 45, 90, 135"},
      {edit("\"condition\": 1.", "\"condition\": 1e9, \"c\": 1."), "condition number is 1e+09"},
      {edit("\"source_offset\": 0.1", "\"source_offset\": 1e999"), "number beyond any range"},
      {edit("\"kind\": \"dark\"", "\"kind\": \"grey\""), "polarized, dark or flat"},
      {edit("\"excess\": 1.01", "\"excess\": null"), "frames[0].excess must be a number"},
      {edit("\"findings\": [", "\"findings\": 3, \"f\": ["), "findings must be a list"},
      {edit("\"file\": \"cal.gain.npy\"", "\"file\": \"../cal.gain.npy\""),
       "must be a file beside"},
      {edit("\"file\": \"cal.gain.npy\"", "\"file\": \"cal.black.npy\""), "another calibration"},
      {edit("float32", "float64"), "it must be of float32"},
      {[&] { std::filesystem::remove(gain); }, "its map cal.gain.npy: there is no such file"},
      {[&] { std::filesystem::resize_file(gain, 500); }, "is no map of 20 x 10 pixels"},
      {[&] { replace_in(gain, "(10, 20)", "(20, 10)"); }, "is no map of 20 x 10 pixels"},
      {[&] { replace_in(gain, "\x3f", "\x40"); }, "was changed"},
      {put_gain(std::numeric_limits<float>::quiet_NaN()), "gain at column 3, row 0 is no number"},
      {put_gain(-1), "gain at column 3, row 0 is -1; it must be from"}};
  for (const auto& [damage, part] : cases) {
    save_calibration(saved_calibration(), json);
    damage();
    EXPECT_PRED2(contains, error_of([&] { load_calibration(json); }), part);
  }
}

TEST(CalibrationFile, LeavesNothingHalfWritten) {
  const TemporaryFolder folder;
  Calibration calibration = saved_calibration();
  calibration.maps.gain.resize(7);
  EXPECT_PRED2(contains, error_of([&] { save_calibration(calibration, folder / "a.json"); }),
               "gain has 7 values");
  calibration = saved_calibration();
  calibration.camera = "\xff";
  EXPECT_PRED2(contains, error_of([&] { save_calibration(calibration, folder / "a.json"); }),
               "UTF-8");
  EXPECT_EQ(names_in(folder / "."), std::vector<std::string>{});
}

TEST(Sha256, GivesThePublishedSums) {
  // FIPS 180-2, appendix B, and the sum of nothing.
  EXPECT_EQ(sha256_of(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(sha256_of("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(sha256_of("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
            "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
  Sha256 sum;
  for (int i = 0; i < 15625; ++i) {  // a million in pieces that are no divisor of a block
    const std::string piece(64, 'a');
    sum.add(std::as_bytes(std::span(piece).subspan(0, 37)));
    sum.add(std::as_bytes(std::span(piece).subspan(37)));
  }
  EXPECT_EQ(sum.digest(), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

}  // namespace

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// NPY files as NumPy lays them down, byte by byte.
#include <gtest/gtest.h>

#include <cstring>

#include "error_of.h"
#include "kv/image_files.h"
#include "temporary_folder.h"

using namespace kv::polarization;

namespace {

using Samples = Buffer<std::uint16_t>;

std::string npy_file(const std::string& dictionary, const std::string& data, int version = 1) {
  std::string size = {static_cast<char>(dictionary.size()), '\0'};
  if (version > 1) size += std::string(2, '\0');
  return "\x93NUMPY" + std::string{static_cast<char>(version), '\0'} + size + dictionary + data;
}

std::string dictionary(const std::string& type, const std::string& shape) {
  return "{'descr': '" + type + "', 'fortran_order': False, 'shape': " + shape + ", }\n";
}

std::unique_ptr<FrameReader> open(const std::string& content) {
  return open_frames(std::as_bytes(std::span(content)));
}

TEST(Npy, ArraysAreFrames) {
  const std::string bytes("\1\2\3\4\5\6\7\10\11\12\13\14", 12);
  struct Case {
    std::string content;
    int width, height;
    Samples last;  ///< frame
  };
  const Case cases[] = {
      {npy_file(dictionary("|u1", "(3, 4)"), bytes), 4, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}},
      {npy_file(dictionary("<u2", "(2, 3)"), bytes, 2),
       3,
       2,
       {0x0201, 0x0403, 0x0605, 0x0807, 0x0A09, 0x0C0B}},
      {npy_file(dictionary(">u2", "(3, 1, 2)"), bytes, 3), 2, 1, {0x090A, 0x0B0C}},
      {npy_file("{ \"shape\":(6,2,1,),\"fortran_order\":False,\"descr\":'|u1'}", bytes),
       1,
       2,
       {11, 12}},
  };
  for (const auto& [content, width, height, last] : cases) {
    const auto reader = open(content);
    const Frame frame = reader->read(reader->count() - 1);
    EXPECT_EQ(std::pair(frame.width, frame.height), std::pair(width, height));
    EXPECT_EQ(frame.samples, last);
    EXPECT_PRED2(contains,
                 error_of([&content = content] { open(content.substr(0, content.size() - 1)); }),
                 "truncated");
  }
}

TEST(Npy, OtherArraysAreRefused) {
  const std::string bytes(64, 'x');
  const std::string u1 = "{'descr': '|u1', 'fortran_order': ";
  struct Case {
    FaultKind kind;
    std::string content;
    const char* part;
  };
  const Case cases[] = {
      {FaultKind::unsupported, npy_file(u1 + "True, 'shape': (2, 2), }", bytes), "Fortran order"},
      {FaultKind::unsupported, npy_file(dictionary("<f4", "(2, 2)"), bytes), "of type <f4"},
      {FaultKind::unsupported, npy_file(dictionary("<i2", "(2, 2)"), bytes), "of type <i2"},
      {FaultKind::unsupported, npy_file("{'descr': [('x', '<u2')], 'shape': (2, 2)}", bytes),
       "of type record"},
      {FaultKind::unsupported, npy_file(dictionary("|u1", "(2,)"), bytes), "has 1 dimensions"},
      {FaultKind::unsupported, npy_file(dictionary("|u1", "(2, 2, 2, 2)"), bytes), "4 dimensions"},
      {FaultKind::unsupported, npy_file(dictionary("|u1", "(2, 2)"), bytes, 4), "version 4"},
      {FaultKind::file, npy_file(dictionary("|u1", "(0, 2)"), bytes), "is empty"},
      {FaultKind::file, npy_file(dictionary("|u1", "(2, -2)"), bytes), "not made of numbers"},
      {FaultKind::file, npy_file(dictionary("|u1", "(2 2)"), bytes), "comma"},
      {FaultKind::file, npy_file(dictionary("|u1", "2"), bytes), "'(' is missing"},
      // In 64 bits the products of these pass for 0, for 4, and for what a number can hold.
      {FaultKind::file, npy_file(dictionary("<u2", "(4294967296, 4294967296)"), bytes),
       "truncated"},
      {FaultKind::file, npy_file(dictionary("<u2", "(9223372036854775809, 2)"), bytes),
       "truncated"},
      {FaultKind::file, npy_file(dictionary("|u1", "(2, 99999999999999999999)"), bytes),
       "not made of numbers"},
      {FaultKind::file, npy_file(u1 + "maybe, 'shape': (2, 2), }", bytes), "neither True nor"},
      {FaultKind::file, npy_file(u1 + "False, }", bytes), "three keys"},
      {FaultKind::file, npy_file(u1 + "False, 'more': 1 }", bytes), "'more'"},
      {FaultKind::file, npy_file("{'descr", bytes), "quotes is missing"},
      {FaultKind::file, npy_file("{", ""), "ends within"},
      {FaultKind::file, npy_file("(", bytes), "'{' is missing"},
      {FaultKind::file, "\x93NUMPY\x02" + std::string("\0\xFF\xFF\xFF\x7F", 5) + bytes,
       "ends within"},
  };
  for (const auto& [kind, content, part] : cases) {
    const auto work = [&content = content] { open(content)->read(0); };
    EXPECT_PRED2(contains, error_of(work), part);
    EXPECT_EQ(kind_of(work), kind) << part;
  }
}

TEST(Npy, FilesAreWhatNumPyExpects) {
  const TemporaryFolder folder;
  const auto expect = [&](const auto& image, const std::string& type, const std::string& shape,
                          const void* data, std::size_t size) {
    save_image(folder / "a.npy", image);
    std::string header =
        "{'descr': '" + type + "', 'fortran_order': False, 'shape': " + shape + ", }";
    // Signature, version, size and text take 128 bytes.
    header.resize(117, ' ');
    const std::string expected = "\x93NUMPY" + std::string("\1\0v\0", 4) + header + "\n" +
                                 std::string(static_cast<const char*>(data), size);
    EXPECT_EQ(content_of(folder / "a.npy"), expected);
  };
  const std::vector<float> floats = {0.5f, -1, 2, 3, 4, 5};
  expect(FloatImage{3, 1, 2, floats}, "<f4", "(1, 3, 2)", floats.data(), 24);
  expect(FloatImage{3, 2, 1, floats}, "<f4", "(2, 3)", floats.data(), 24);
  const std::vector<std::uint16_t> words = {1, 256, 65535};
  expect(GreyImage{3, 1, 16, words}, "<u2", "(1, 3)", words.data(), 6);
  const std::vector<std::uint16_t> small = {1, 255};
  expect(GreyImage{1, 2, 8, small}, "|u1", "(2, 1)", "\1\xFF", 2);
  Picture picture(1, 2, 3);
  expect(picture, "|u1", "(2, 1, 3)", std::string(6, '\0').data(), 6);
}

}  // namespace

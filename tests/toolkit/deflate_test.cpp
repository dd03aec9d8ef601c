// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Streams of our own encoder, inflated by zlib.
#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <random>
#include <string>

#include "toolkit/image_files/deflate/zlib_encoder.h"
#include "toolkit/image_files/deflate/zlib_library.h"

using namespace kv::polarization;

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes noise(std::size_t size, int symbols) {
  std::mt19937 random(7);
  Bytes bytes(size);
  for (std::uint8_t& byte : bytes) {
    byte = static_cast<std::uint8_t>(random() % static_cast<unsigned>(symbols));
  }
  return bytes;
}

/// Each symbol once more often than the two before it: Huffman's tree is as deep as it can be.
Bytes fibonacci() {
  Bytes bytes;
  for (std::size_t symbol = 0, count = 1, next = 1; bytes.size() + count < 120000; ++symbol) {
    bytes.insert(bytes.end(), count, static_cast<std::uint8_t>(symbol));
    next += std::exchange(count, next);
  }
  std::shuffle(bytes.begin(), bytes.end(), std::mt19937(1));
  return bytes;
}

/// Runs of all lengths around the shortest and the longest match, ending in words and between them.
Bytes runs() {
  Bytes bytes;
  for (const auto& [from, to] : {std::pair{1, 70}, {255, 280}, {512, 540}, {700, 705}}) {
    for (int length = from; length < to; ++length) {
      bytes.insert(bytes.end(), static_cast<std::size_t>(length),
                   static_cast<std::uint8_t>(length % 5));
    }
  }
  return bytes;
}

Bytes encoded(ZlibEncoder& encoder, const Bytes& bytes, std::size_t piece) {
  Bytes stream;
  std::size_t done = 0;
  do {
    const std::size_t size = std::min(piece, bytes.size() - done);
    const auto some = encoder.encode({bytes.data() + done, size}, done + size == bytes.size());
    stream.insert(stream.end(), some.begin(), some.end());
    done += size;
  } while (done < bytes.size());
  return stream;
}

TEST(ZlibEncoder, StreamsAreWhatZlibInflates) {
  struct Case {
    const char* name;
    Bytes bytes;
    std::size_t most;  ///< of the fast stream
  };
  Bytes all(256);
  for (std::size_t i = 0; i < all.size(); ++i) all[i] = static_cast<std::uint8_t>(i);
  Bytes far_apart = noise(300000, 256);
  std::fill(far_apart.begin() + 1000, far_apart.begin() + 290000, std::uint8_t{9});
  const Case cases[] = {
      {"nothing", {}, 11},
      {"a byte", {7}, 12},
      {"17 equal bytes", Bytes(17, 7), 28},
      {"a run over many blocks", Bytes(1 << 20, 0), 4000},
      {"a run and what ends it",
       [] {
         Bytes b(131071, 3);
         b.push_back(4);
         return b;
       }(),
       500},
      {"all bytes once", all, 267},
      {"two symbols", noise(200000, 2), 37600},
      {"16 symbols", noise(200001, 16), 101700},
      {"noise that does not shrink", noise(200003, 256), 200003 + 40},
      {"noise with a long run", far_apart, 13000},
      {"the deepest tree", fibonacci(), 36000},
      {"runs", runs(), 2000},
  };
  for (const auto& [name, bytes, most] : cases) {
    for (const Compression compression :
         {Compression::none, Compression::fast, Compression::small}) {
      ZlibEncoder encoder(compression);
      for (const std::size_t piece :
           {std::size_t{1} << 20, std::size_t{131072}, std::size_t{997}}) {
        SCOPED_TRACE(std::string(name) + " in pieces of " + std::to_string(piece) +
                     " with compression " + std::to_string(static_cast<int>(compression)));
        const Bytes stream = encoded(encoder, bytes, piece);
        Bytes back(bytes.size() + 1);
        auto size = static_cast<uLongf>(back.size());
        ASSERT_EQ(uncompress(back.data(), &size, stream.data(), static_cast<uLong>(stream.size())),
                  Z_OK);
        back.resize(size);
        EXPECT_TRUE(back == bytes);
        EXPECT_TRUE(encoded(encoder, bytes, piece) == stream);
        if (piece != 997) {
          EXPECT_LE(stream.size(), compression == Compression::none ? bytes.size() + 200 : most);
        }
      }
    }
  }
}

TEST(ZlibLibrary, TakesNothingButWholeStreams) {
  const Bytes bytes = noise(1000, 4);
  ZlibEncoder encoder(Compression::fast);
  const Bytes stream = encoded(encoder, bytes, 1000);
  Bytes back(1000);
  EXPECT_TRUE(inflate_stream(stream, back));
  EXPECT_EQ(back, bytes);
  for (const std::size_t size : {std::size_t{0}, std::size_t{999}, std::size_t{1001}}) {
    back.resize(size);
    EXPECT_FALSE(inflate_stream(stream, back)) << size;
  }
  back.resize(1000);
  for (std::size_t size = 0; size < stream.size(); ++size) {
    EXPECT_FALSE(inflate_stream({stream.data(), size}, back)) << size;
  }
  EXPECT_EQ(crc32_of(crc32_of(0, {stream.data(), 5}), {stream.data() + 5, 9}),
            crc32(0, stream.data(), 14));
  EXPECT_EQ(crc32_of(3, {}), 3u);
  EXPECT_EQ(adler32_of(3, {}), 3u);
}

}  // namespace

// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/file/npy_map.h"

#include <span>
#include <type_traits>

#include "kv/polarization/fault.h"
#include "kv/polarization/frame.h"
#include "toolkit/calibration/file/sha256.h"
#include "toolkit/image_files/byte_source.h"

namespace kv::polarization {
namespace {

/// Everything before the numbers: mark, version, length of the text, and the text, padded so that
/// the numbers begin at a multiple of 64 bytes.
template <class Number>
std::string npy_start(int width, int height) {
  const std::string type = std::is_same_v<Number, float> ? "<f4" : "|u1";
  std::string text = "{'descr': '" + type + "', 'fortran_order': False, 'shape': (" +
                     std::to_string(height) + ", " + std::to_string(width) + "), }";
  constexpr std::size_t before_text = 10;
  while ((before_text + text.size() + 1) % 64 != 0) text += ' ';
  text += '\n';
  const char length[] = {static_cast<char>(text.size() & 255), static_cast<char>(text.size() >> 8)};
  return "\x93NUMPY" + std::string{1, 0} + std::string(length, 2) + text;
}

template <class Number>
std::string sum_of(const std::string& start, const Buffer<Number>& map) {
  Sha256 sum;
  sum.add(std::as_bytes(std::span(start)));
  sum.add(std::as_bytes(std::span(map)));
  return sum.digest();
}

}  // namespace

template <class Number>
std::string write_npy_map(PendingFile& file, const Buffer<Number>& map, int width, int height) {
  const std::string start = npy_start<Number>(width, height);
  file.write(start.data(), start.size());
  file.write(map.data(), map.size() * sizeof(Number));
  return sum_of(start, map);
}

template <class Number>
std::string read_npy_map(const std::filesystem::path& path, int width, int height,
                         Buffer<Number>& map) {
  const std::string expected = npy_start<Number>(width, height);
  const std::size_t bytes = pixel_count(width, height) * sizeof(Number);
  const SourcePointer file = source_of(open_stream(path));
  std::string start(expected.size(), '\0');
  if (file->size() != expected.size() + bytes ||
      file->read(0, start.data(), start.size()) != start.size() || start != expected) {
    throw Fault(FaultKind::file, "it is no map of " + std::to_string(width) + " x " +
                                     std::to_string(height) + " pixels as " +
                                     (std::is_same_v<Number, float> ? "float32" : "uint8") +
                                     " in " + std::to_string(expected.size() + bytes) +
                                     " bytes of NPY 1.0; take the one that was saved");
  }
  map.resize(pixel_count(width, height));
  if (file->read(start.size(), map.data(), bytes) != bytes) {
    throw Fault(FaultKind::file, "it cannot be read to its end; copy it again");
  }
  return sum_of(start, map);
}

template std::string write_npy_map(PendingFile&, const Buffer<float>&, int, int);
template std::string write_npy_map(PendingFile&, const Buffer<std::uint8_t>&, int, int);
template std::string read_npy_map(const std::filesystem::path&, int, int, Buffer<float>&);
template std::string read_npy_map(const std::filesystem::path&, int, int, Buffer<std::uint8_t>&);

}  // namespace kv::polarization
